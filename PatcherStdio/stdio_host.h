#pragma once

#include <functional>
#include <string>

#include "control/dispatch.h"
#include "control/host_operations.h"
#include "control/protocol/event_backlog.h"
#include "platform/message_queue.h"

namespace patcher {

/// The launcher's host without a window: messages for the page go to standard output, requests come from
/// standard input, and what would happen to the window is written to standard error. Lives as long as the
/// process.
class StdioHost final : public HostOperations {
 public:
  enum class Form { kJson, kReadable };

  StdioHost(Form form, OperationTable operations);

  static constexpr int kExitNoThread = 3;

  /// Does what a completed navigation does, then serves requests. Returns the exit code: 0, at once for
  /// "play" and "cancel", else when the input has ended and no worker is running; kExitNoThread, after a line
  /// on standard error, if the input cannot be read for want of a thread.
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
  EventBacklog backlog_;  // what is posted to the queue, but for requests, which wait at their source
  Dispatcher dispatcher_;
  int runningWorkers_ = 0;   // main thread only
  bool inputEnded_ = false;  // main thread only
};

}  // namespace patcher
