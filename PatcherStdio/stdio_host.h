#pragma once

#include <functional>
#include <string>

#include "control/dispatch.h"
#include "control/host_operations.h"
#include "control/protocol/event_backlog.h"
#include "platform/message_queue.h"

namespace patcher {

/// The launcher's host without a window: reads requests from standard input, writes messages for the page to
/// standard output, and writes window actions to standard error. Lives until the process ends.
class StdioHost final : public HostOperations {
 public:
  enum class Form { kJson, kReadable };

  StdioHost(Form form, OperationTable operations);

  static constexpr int kExitNoThread = 3;

  /// Starts as after a completed navigation, then handles requests. Returns the exit code 0 immediately after
  /// "play", "cancel", "windowClose" and a self-update, else when the input has ended and no worker is
  /// running. If no thread can be started to read the input, prints an error and returns kExitNoThread.
  int Run();

  void PostEvent(const UiEvent& event) noexcept override;
  void SendToPage(const std::u16string& text) override;
  void EndMessageLoop() override;
  void StartDragging() override;
  void Minimize() override;
  void ToggleMaximize() override;
  void AskToClose() override;
  void StartThread(std::function<void()> entry) override;

 private:
  void HandleMessage(const platform::QueueMessage& message);
  void ReadRequests();
  void EndIfIdle();

  const Form form_;
  platform::MessageQueue queue_;
  EventBacklog
      backlog_;  // for messages that the queue refused, except requests, which wait in the input thread
  Dispatcher dispatcher_;
  int runningWorkers_ = 0;   // main thread only
  bool inputEnded_ = false;  // main thread only
};

}  // namespace patcher
