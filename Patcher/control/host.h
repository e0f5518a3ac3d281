#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace patcher {

/// One message of the main thread's queue. The kind's number and the two parameters are its whole content; a
/// payload behind `lParam` changes owner when the event is posted.
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

/// What the dispatcher asks of whatever shows the page. Main thread only, but for PostEvent.
class HostOperations : public HostWindow {
 public:
  /// Delivers one message to the page, or drops it if there is no page.
  virtual void SendToPage(const std::u16string& text) = 0;
  /// The main loop ends with exit code 0 after the present message.
  virtual void EndMessageLoop() = 0;
  /// The window follows the pointer until the primary button is released, if it is down and has moved as far
  /// as a drag takes. Returns at once.
  virtual void StartDragging() = 0;
  virtual void Minimize() = 0;
  /// A maximized window is restored, any other is maximized.
  virtual void ToggleMaximize() = 0;
  /// An ordinary close request, queued.
  virtual void AskToClose() = 0;
  /// Runs `entry` on a detached thread. Raises std::system_error if there is no thread to be had.
  virtual void StartThread(std::function<void()> entry) = 0;
};

}  // namespace patcher
