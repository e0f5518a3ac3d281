#pragma once

#include <cstdint>

namespace patcher {

/// One message of the main thread's queue: the number of its kind and two parameters. `lParam` may point to a
/// payload, which belongs to the receiver once the event is posted.
struct UiEvent {
  std::uint32_t number = 0;
  std::uintptr_t wParam = 0;
  std::intptr_t lParam = 0;
};

/// The part of the main window that workers use: they post events to it.
class HostWindow {
 public:
  virtual ~HostWindow() = default;
  /// Any thread; never blocks. After the window has ended, events are kept until the process ends.
  virtual void PostEvent(const UiEvent& event) noexcept = 0;
};

}  // namespace patcher
