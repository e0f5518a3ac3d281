#include "control/dispatch.h"

#include <exception>
#include <memory>
#include <system_error>

#include "control/protocol/page_messages.h"
#include "platform/text.h"
#include "shared/own_files.h"
#include "shared/program.h"
#include "transport/debug_log.h"

namespace patcher {
namespace {

constexpr char kThreadFailure[] = "Impossible de demarrer l'operation.";
/// The page recognizes a refused "verify" or "repair" by this text (REFUSAL in page/launcher.html).
constexpr char kRefusal[] = "Une operation est deja en cours.";

std::filesystem::path SettingsPath() { return ExeDir() / kSettingsFile; }

template <typename Payload>
std::unique_ptr<Payload> TakePayload(const UiEvent& event) {
  return std::unique_ptr<Payload>(reinterpret_cast<Payload*>(event.lParam));
}

/// Operations report their own failures. Other exceptions, for example std::bad_alloc, must not end the
/// process.
template <typename Operation>
void RunOnWorker(const Operation& operation) {
  try {
    operation();
  } catch (const std::exception& failure) {
    DebugLog::WriteException("a worker", failure);
  }
}

/// The window that a long operation posts to. The operation's `ready` means that the guard will soon be free.
class OperationWindow final : public HostWindow {
 public:
  OperationWindow(HostWindow& window, OperationLease& lease) : window_(window), lease_(lease) {}
  void PostEvent(const UiEvent& event) noexcept override {
    if (static_cast<UiEventKind>(event.number) == UiEventKind::UiReady) lease_.MarkEnding();
    window_.PostEvent(event);
  }

 private:
  HostWindow& window_;
  OperationLease& lease_;
};

}  // namespace

struct Dispatcher::Action {
  std::string_view name;
  void (Dispatcher::*handler)(const MiniJson::Value& request);
};

const Dispatcher::Action Dispatcher::kActions[] = {
    {"play", &Dispatcher::Play},
    {"cancel", &Dispatcher::Cancel},
    {"verify", &Dispatcher::Verify},
    {"repair", &Dispatcher::Repair},
    {"getNews", &Dispatcher::GetNews},
    {"openUrl", &Dispatcher::OpenUrl},
    {"windowDrag", &Dispatcher::WindowDrag},
    {"windowMinimize", &Dispatcher::WindowMinimize},
    {"windowMaximize", &Dispatcher::WindowMaximize},
    {"windowClose", &Dispatcher::WindowClose},
    {"getOptions", &Dispatcher::GetOptions},
    {"saveOptions", &Dispatcher::SaveOptions},
};

Dispatcher::Dispatcher(HostOperations& host, OperationTable operations)
    : host_(host), operations_(std::move(operations)) {}

void Dispatcher::DispatchPageMessage(std::u16string_view text) {
  // The page may have sent this before the launcher began to end, or while an error box is open.
  if (ending_) return;
  try {
    const std::string narrow = platform::WideToUtf8(text);
    std::size_t position = 0;
    const MiniJson::Value request = MiniJson::Parse(narrow, position);
    const MiniJson::Value* member = request.Find("action");
    const std::string name = member != nullptr ? member->AsString("") : "";
    for (const Action& action : kActions) {
      if (action.name == name) {
        (this->*action.handler)(request);
        return;
      }
    }
  } catch (const std::exception&) {
    // A bad request is ignored.
  }
}

void Dispatcher::Play(const MiniJson::Value&) {
  if (canPlay_) End(operations_.launchClient);
}

void Dispatcher::Cancel(const MiniJson::Value&) { End(nullptr); }

void Dispatcher::Verify(const MiniJson::Value&) { StartCheckWorker(false); }

void Dispatcher::Repair(const MiniJson::Value&) { StartCheckWorker(true); }

void Dispatcher::GetNews(const MiniJson::Value&) {
  try {
    host_.StartThread([this] { RunOnWorker([this] { operations_.fetchNews(host_); }); });
  } catch (const std::system_error&) {
    host_.SendToPage(BuildNewsFailedMessage());
  }
}

void Dispatcher::OpenUrl(const MiniJson::Value& request) {
  const MiniJson::Value* url = request.Find("url");
  if (url != nullptr) operations_.openExternalUrl(platform::Utf8ToWide(url->AsString("")));
}

void Dispatcher::WindowDrag(const MiniJson::Value&) { host_.StartDragging(); }

void Dispatcher::WindowMinimize(const MiniJson::Value&) { host_.Minimize(); }

void Dispatcher::WindowMaximize(const MiniJson::Value&) { host_.ToggleMaximize(); }

void Dispatcher::WindowClose(const MiniJson::Value&) { host_.AskToClose(); }

void Dispatcher::GetOptions(const MiniJson::Value&) { PushOptions(); }

void Dispatcher::SaveOptions(const MiniJson::Value& request) {
  const MiniJson::Value* values = request.Find("values");
  // The values say this too, since a second click may send a request before the page has received the new
  // values.
  const bool areDefaults = values != nullptr && (formHasDefaults_ || AreDefaultsForUnreadableFile(*values));
  const bool ok = values != nullptr && !areDefaults && operations_.saveOptions(SettingsPath(), *values);
  host_.SendToPage(BuildOptionsSavedMessage(ok));
  if (ok || areDefaults) PushOptions();
}

void Dispatcher::PushOptions() {
  const OptionsMessage message = operations_.buildOptionsMessage(SettingsPath());
  formHasDefaults_ = message.unreadable;
  host_.SendToPage(message.text);
}

void Dispatcher::StartWorker(OperationLease lease, std::function<void(HostWindow&)> operation) {
  // Shared, because a std::function must be copyable.
  auto sharedLease = std::make_shared<OperationLease>(std::move(lease));
  host_.StartThread([this, sharedLease = std::move(sharedLease), operation = std::move(operation)] {
    OperationWindow window(host_, *sharedLease);
    RunOnWorker([&] { operation(window); });
  });
}

void Dispatcher::StartCheckWorker(bool repair) {
  std::optional<OperationLease> lease = guard_.TryTake();
  if (!lease) {
    PostStatus(host_, kRefusal);
    return;
  }
  try {
    StartWorker(std::move(*lease),
                [this, repair](HostWindow& window) { operations_.runCheckOperation(window, repair); });
  } catch (const std::system_error&) {
    PostNarrowJson(host_, BuildCheckErrorMessage(repair ? "repair" : "verify", "serveur injoignable"));
    PostReady(host_, operations_.clientExists());
  }
}

void Dispatcher::StartUpdateWorker() {
  std::optional<OperationLease> lease = guard_.TryTake();
  if (!lease) return;
  try {
    StartWorker(std::move(*lease), operations_.runUpdate);
  } catch (const std::system_error&) {
    PostStatus(host_, kThreadFailure);
    PostReady(host_, operations_.clientExists());
  }
}

void Dispatcher::End(const std::function<void()>& lastOperation) {
  if (ending_) return;
  ending_ = true;
  try {
    if (lastOperation) lastOperation();
  } catch (const std::exception&) {
    // The launcher ends even if the last operation failed.
  }
  host_.EndMessageLoop();
}

void Dispatcher::NavigationCompleted() {
  try {
    PushOptions();
  } catch (const std::exception&) {
    // The page keeps its empty form, and the run still starts.
  }
  StartUpdateWorker();
}

void Dispatcher::HandleUiEvent(const UiEvent& event) {
  switch (static_cast<UiEventKind>(event.number)) {
    case UiEventKind::UiStatus:
      host_.SendToPage(BuildStatusMessage(*TakePayload<std::string>(event)));
      break;
    case UiEventKind::UiProgress:
      host_.SendToPage(BuildProgressMessage(*TakePayload<ProgressReport>(event)));
      break;
    case UiEventKind::UiReady:
      canPlay_ = event.wParam == 1;
      host_.SendToPage(BuildReadyMessage(canPlay_));
      break;
    case UiEventKind::UiSelfUpdate:
      End(operations_.selfUpdateSwap);
      break;
    case UiEventKind::UiVersions:
      host_.SendToPage(BuildVersionsMessage(static_cast<std::int32_t>(event.wParam),
                                            static_cast<std::int32_t>(event.lParam)));
      break;
    case UiEventKind::UiServer:
      host_.SendToPage(BuildServerMessage(event.wParam != 0));
      break;
    case UiEventKind::UiNarrowJson:
      host_.SendToPage(platform::Utf8ToWide(*TakePayload<std::string>(event)));
      break;
    case UiEventKind::UiWideJson:
      host_.SendToPage(*TakePayload<std::u16string>(event));
      break;
  }
}

}  // namespace patcher
