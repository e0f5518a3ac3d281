#pragma once

#include <functional>
#include <string>

#include "control/protocol/host_window.h"

namespace patcher {

/// What the dispatcher needs from the program that shows the page. Main thread only, except PostEvent.
class HostOperations : public HostWindow {
 public:
  /// Sends one message to the page, or drops it if there is no page.
  virtual void SendToPage(const std::u16string& text) = 0;
  /// Ends the main loop with exit code 0 after the current message.
  virtual void EndMessageLoop() = 0;
  /// Starts to move the window with the pointer, once the pointer has moved by the drag distance with the
  /// primary button down. The move ends when the button is released. Returns at once.
  virtual void StartDragging() = 0;
  virtual void Minimize() = 0;
  /// Restores a maximized window, maximizes any other.
  virtual void ToggleMaximize() = 0;
  /// Queues an ordinary close request.
  virtual void AskToClose() = 0;
  /// Runs `entry` on a detached thread. Raises std::system_error if no thread can be started.
  virtual void StartThread(std::function<void()> entry) = 0;
};

}  // namespace patcher
