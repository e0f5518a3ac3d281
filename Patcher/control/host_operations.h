#pragma once

#include <functional>
#include <string>

#include "control/protocol/host_window.h"

namespace patcher {

/// What the dispatcher asks of the program that shows the page. Main thread only, but for PostEvent.
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
