// Input: requests of the page, one a line, UTF-8; the whole input is then dispatched once more as UTF-16.
#include <cstring>
#include <vector>

#include "control/dispatch.h"
#include "control/host_operations.h"
#include "control/protocol/ui_event.h"
#include "fuzz.h"
#include "minijson/minijson.h"
#include "options/options_exchange.h"
#include "platform/text.h"
#include "support/scratch_directory.h"

namespace patcher {
namespace {

/// A host that delivers at once and runs workers to their end where they are started.
class ImmediateHost final : public HostOperations {
 public:
  void PostEvent(const UiEvent& event) noexcept override { events_.push_back(event); }
  void SendToPage(const std::u16string& text) override {
    std::size_t position = 0;
    const MiniJson::Value message = MiniJson::Parse(platform::WideToUtf8(text), position);
    Require(message.Find("type") != nullptr, "every message has a type");
  }
  void EndMessageLoop() override { ended_ = true; }
  void StartDragging() override {}
  void Minimize() override {}
  void ToggleMaximize() override {}
  void AskToClose() override {}
  void StartThread(std::function<void()> entry) override { entry(); }

  void Deliver(Dispatcher& dispatcher) {
    for (const UiEvent& event : std::exchange(events_, {})) dispatcher.HandleUiEvent(event);
  }

  bool Ended() const { return ended_; }

 private:
  std::vector<UiEvent> events_;
  bool ended_ = false;
};

void DispatchAll(std::string_view text) {
  ImmediateHost host;
  int checks = 0;
  OperationTable table;
  table.runUpdate = [](HostWindow& window) { PostReady(window, true); };
  table.runCheckOperation = [&](HostWindow& window, bool repair) {
    ++checks;
    PostStatus(window, repair ? "repair" : "verify");
  };
  table.fetchNews = [](HostWindow& window) { PostWideJson(window, u"{\"type\":\"news\",\"ok\":false}"); };
  table.launchClient = [] {};
  table.openExternalUrl = [](const std::u16string&) {};
  table.buildOptionsMessage = BuildOptionsMessage;
  table.saveOptions = SaveOptions;
  table.selfUpdateSwap = [] {};
  table.clientExists = [] { return true; };
  Dispatcher dispatcher(host, std::move(table));

  for (std::string_view rest = text; !rest.empty();) {
    const std::size_t end = rest.find('\n');
    dispatcher.DispatchPageMessage(platform::Utf8ToWide(rest.substr(0, end)));
    host.Deliver(dispatcher);
    rest = end == rest.npos ? std::string_view() : rest.substr(end + 1);
  }
  std::u16string wide(text.size() / 2, u'\0');
  if (!wide.empty()) std::memcpy(wide.data(), text.data(), wide.size() * 2);
  dispatcher.DispatchPageMessage(wide);
  host.Deliver(dispatcher);

  const int before = checks;
  dispatcher.DispatchPageMessage(u"{\"action\":\"verify\"}");
  host.Deliver(dispatcher);
  Require(checks == before + (host.Ended() ? 0 : 1),
          "a verification is taken up to the end, and none behind it");
}

}  // namespace
}  // namespace patcher

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const patcher::ScratchDirectory directory;
  patcher::DispatchAll(patcher::AsText(data, size));
  return 0;
}
