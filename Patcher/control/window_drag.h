#pragma once

#include "platform/window.h"

namespace patcher {

/// Decides whether a press on the page's title band becomes a move of the window. The page's request comes
/// from another process, so the button may already be up when it arrives. A press without movement may be
/// half of a double click, which the page handles.
class WindowDrag {
 public:
  enum class Step {
    kWait,
    kMove,  ///< the pointer has moved far enough: start to move the window
    kEnd,   ///< the button is up
  };

  /// Called when the page requests a move. False if the primary button is already up.
  [[nodiscard]] bool Begin(const platform::PointerState& pointer);
  /// Called with each later state of the pointer until it returns kMove or kEnd.
  [[nodiscard]] Step Follow(const platform::PointerState& pointer) const;

 private:
  platform::Point pressedAt_;
};

}  // namespace patcher
