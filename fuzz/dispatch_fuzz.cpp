// Input: requests of the page, one per line, in UTF-8. Then the whole input is dispatched again as UTF-16.
#include <algorithm>
#include <sstream>

#include "control/dispatch.h"
#include "control/protocol/ui_event.h"
#include "fuzz.h"
#include "minijson/minijson.h"
#include "options/options_exchange.h"
#include "platform/text.h"
#include "support/recording_host.h"
#include "support/scratch_directory.h"

void patcher::Fuzz(std::string_view input) {
  static const ScratchDirectory directory;
  RecordingHost host;
  int checks = 0;
  OperationTable table;
  table.runUpdate = [](HostWindow& window) { PostReady(window, true); };
  table.runCheckOperation = [&](HostWindow&, bool) { ++checks; };
  table.fetchNews = [](HostWindow& window) { PostWideJson(window, u"{\"type\":\"news\",\"ok\":false}"); };
  table.launchClient = [] {};
  table.openExternalUrl = [](const std::u16string&) {};
  table.buildOptionsMessage = BuildOptionsMessage;
  table.saveOptions = SaveOptions;
  table.selfUpdateSwap = [] {};
  table.clientExists = [] { return true; };
  Dispatcher dispatcher(host, std::move(table));
  /// Waits for the workers and delivers the events that they posted.
  const auto dispatch = [&](const std::u16string& request) {
    dispatcher.DispatchPageMessage(request);
    host.JoinWorkers();
    for (const UiEvent& event : host.TakeEvents()) dispatcher.HandleUiEvent(event);
    for (const std::u16string& text : std::exchange(host.sent, {})) {
      std::size_t position = 0;
      const MiniJson::Value message = MiniJson::Parse(platform::WideToUtf8(text), position);
      Require(message.Find("type") != nullptr, "every message has a type");
    }
  };
  std::istringstream lines{std::string(input)};
  for (std::string line; std::getline(lines, line);) dispatch(platform::Utf8ToWide(line));
  dispatch(AsUtf16(input));
  const int before = checks;
  dispatch(u"{\"action\":\"verify\"}");
  const bool ended = std::count(host.calls.begin(), host.calls.end(), "end") > 0;
  Require(checks == before + (ended ? 0 : 1), "only an ending launcher ignores a verification");
}
