#include "stdio_host.h"

#include <memory>
#include <new>
#include <string>
#include <system_error>
#include <thread>

#include "control/protocol/ui_event.h"
#include "platform/standard_streams.h"
#include "platform/text.h"
#include "readable_message.h"
#include "shared/detached_thread.h"

namespace patcher {
namespace {

// Messages of this host. Their numbers are above those of the workers.
constexpr std::uint32_t kRequest = 0x8101;  // lParam: std::string, one line of input
constexpr std::uint32_t kInputEnded = 0x8102;
constexpr std::uint32_t kWorkerEnded = 0x8103;
constexpr std::uint32_t kCloseRequest = 0x8104;

}  // namespace

StdioHost::StdioHost(Form form, OperationTable operations)
    : form_(form),
      queue_([this](const platform::QueueMessage& message) { HandleMessage(message); }),
      backlog_([this](const UiEvent& event) {
        return queue_.Post({event.number, event.wParam, event.lParam});
      }),
      dispatcher_(*this, std::move(operations)) {}

int StdioHost::Run() {
  try {
    StartDetachedThread([this] { ReadRequests(); });
  } catch (const std::system_error& error) {
    platform::WriteErrorLine(std::string("patcher-stdio: no thread can be started: ") + error.what());
    return kExitNoThread;
  }
  dispatcher_.NavigationCompleted();
  return queue_.Run();
}

void StdioHost::ReadRequests() {
  std::string line;
  while (platform::ReadLine(line)) {
    auto request = std::make_unique<std::string>(std::move(line));
    const platform::QueueMessage message{kRequest, 0, reinterpret_cast<std::intptr_t>(request.get())};
    // A full queue on Windows refuses messages: wait until it accepts this one.
    while (!queue_.Post(message)) std::this_thread::yield();
    static_cast<void>(request.release());  // the message owns it now
    line.clear();
  }
  backlog_.Post({kInputEnded});
}

void StdioHost::HandleMessage(const platform::QueueMessage& message) {
  switch (message.number) {
    case kRequest: {
      std::unique_ptr<std::string> line(reinterpret_cast<std::string*>(message.lParam));
      dispatcher_.DispatchPageMessage(platform::Utf8ToWide(*line));
      break;
    }
    case kInputEnded:
      inputEnded_ = true;
      EndIfIdle();
      break;
    case kWorkerEnded:
      --runningWorkers_;
      EndIfIdle();
      break;
    case kCloseRequest:
      queue_.Quit(0);
      break;
    default:
      dispatcher_.HandleUiEvent({message.number, message.wParam, message.lParam});
  }
  backlog_.Advance();
}

void StdioHost::EndIfIdle() {
  if (inputEnded_ && runningWorkers_ == 0) queue_.Quit(0);
}

void StdioHost::PostEvent(const UiEvent& event) noexcept {
  try {
    backlog_.Post(event);
  } catch (const std::bad_alloc&) {
    ReleasePayload(event);
  }
}

void StdioHost::SendToPage(const std::u16string& text) {
  const std::string message = platform::WideToUtf8(text);
  if (form_ == Form::kJson) {
    platform::WriteLine(message);
  } else {
    platform::WriteLine(ReadableMessage(message));
  }
}

void StdioHost::EndMessageLoop() { queue_.Quit(0); }

void StdioHost::StartDragging() { platform::WriteErrorLine("window: drag"); }

void StdioHost::Minimize() { platform::WriteErrorLine("window: minimize"); }

void StdioHost::ToggleMaximize() { platform::WriteErrorLine("window: maximize or restore"); }

void StdioHost::AskToClose() {
  platform::WriteErrorLine("window: close");
  backlog_.Post({kCloseRequest});
}

void StdioHost::StartThread(std::function<void()> entry) {
  StartDetachedThread([this, entry = std::move(entry)]() mutable {
    entry();
    // Release everything that the entry owns, for example a guard, before the host counts the worker as
    // ended.
    entry = nullptr;
    backlog_.Post({kWorkerEnded});
  });
  ++runningWorkers_;
}

}  // namespace patcher
