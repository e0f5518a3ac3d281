#pragma once

#include "platform/window.h"

namespace patcher {

/// A press on the page's title band, from the page's request to move the window until it is a move or over.
/// The page asks from another process, so the button may be up again by then; and a press that does not move
/// may be half of a double click, which is the page's.
class WindowDrag {
 public:
  enum class Step {
    kWait,
    kMove,  ///< the pointer has moved far enough: the window follows it from now on
    kEnd,   ///< the button is up
  };

  /// The page asks for a move. False if the primary button is up: there is nothing to wait for.
  [[nodiscard]] bool Begin(const platform::PointerState& pointer);
  /// The pointer a moment later, until kMove or kEnd.
  [[nodiscard]] Step Follow(const platform::PointerState& pointer) const;

 private:
  platform::Point pressedAt_;
};

}  // namespace patcher
