// Input: requests of the page, one a line, UTF-8; the whole input is then dispatched once more as UTF-16.
#include <algorithm>
#include <cstring>
#include <vector>

#include "control/dispatch.h"
#include "control/protocol/ui_event.h"
#include "fuzz.h"
#include "minijson/minijson.h"
#include "options/options_exchange.h"
#include "platform/text.h"
#include "support/recording_host.h"
#include "support/scratch_directory.h"

namespace patcher {
namespace {

/// Lets the workers end and delivers what they have posted.
void Deliver(RecordingHost& host, Dispatcher& dispatcher) {
  host.JoinWorkers();
  for (const UiEvent& event : host.TakeEvents()) dispatcher.HandleUiEvent(event);
  for (const std::u16string& text : std::exchange(host.sent, {})) {
    std::size_t position = 0;
    const MiniJson::Value message = MiniJson::Parse(platform::WideToUtf8(text), position);
    Require(message.Find("type") != nullptr, "every message has a type");
  }
}

void DispatchAll(std::string_view text) {
  RecordingHost host;
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
    Deliver(host, dispatcher);
    rest = end == rest.npos ? std::string_view() : rest.substr(end + 1);
  }
  std::u16string wide(text.size() / 2, u'\0');
  if (!wide.empty()) std::memcpy(wide.data(), text.data(), wide.size() * 2);
  dispatcher.DispatchPageMessage(wide);
  Deliver(host, dispatcher);

  const int before = checks;
  dispatcher.DispatchPageMessage(u"{\"action\":\"verify\"}");
  Deliver(host, dispatcher);
  const bool ended = std::count(host.calls.begin(), host.calls.end(), "end") > 0;
  Require(checks == before + (ended ? 0 : 1), "a verification is accepted until the end, and none after it");
}

}  // namespace
}  // namespace patcher

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const patcher::ScratchDirectory directory;
  patcher::DispatchAll(patcher::AsText(data, size));
  return 0;
}
