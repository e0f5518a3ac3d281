#pragma once

#include <cstdint>

namespace patcher {

/// One message of the main thread's queue. The kind's number and the two parameters are its whole content; a
/// payload that `lParam` points to changes owner when the event is posted.
struct UiEvent {
  std::uint32_t number = 0;
  std::uintptr_t wParam = 0;
  std::intptr_t lParam = 0;
};

/// The main window as workers know it: somewhere to post to.
class HostWindow {
 public:
  virtual ~HostWindow() = default;
  /// Any thread; never blocks. An event that can never be delivered is freed.
  virtual void PostEvent(const UiEvent& event) noexcept = 0;
};

}  // namespace patcher
