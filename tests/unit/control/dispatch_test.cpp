#include "control/dispatch.h"

#include <chrono>
#include <future>
#include <thread>

#include <gtest/gtest.h>

#include "platform/text.h"
#include "support/recording_host.h"
#include "support/scratch_directory.h"

namespace patcher {
namespace {

using Texts = std::vector<std::u16string>;

std::u16string Action(const std::string& name) {
  return platform::Utf8ToWide("{\"action\":\"" + name + "\"}");
}

class DispatchTest : public testing::Test {
 protected:
  OperationTable Table() {
    OperationTable table;
    table.runUpdate = [this](HostWindow& window) {
      released.get_future().wait();
      PostReady(window, true);
    };
    table.runCheckOperation = [this](HostWindow& window, bool repair) {
      checks.emplace_back(repair ? "repair" : "verify");
      PostReady(window, false);
    };
    table.fetchNews = [](HostWindow&) { throw std::runtime_error("memory"); };
    table.launchClient = [this] { host.calls.emplace_back("launch"); };
    table.openExternalUrl = [this](const std::u16string& url) { urls.push_back(url); };
    table.buildOptionsMessage = [](const std::filesystem::path&) {
      return OptionsMessage{u"options", false};
    };
    table.saveOptions = [](const std::filesystem::path&, const MiniJson::Value& values) {
      if (values.AsNumber(0) == 13) throw std::runtime_error("disk");
      return values.AsNumber(0) == 1;
    };
    table.selfUpdateSwap = [this] { host.calls.emplace_back("swap"); };
    table.clientExists = [] { return false; };
    return table;
  }

  void DeliverEvents() {
    for (const UiEvent& event : host.TakeEvents()) dispatcher.HandleUiEvent(event);
  }

  Texts Sent() { return std::exchange(host.sent, {}); }

  const ScratchDirectory game;
  std::promise<void> released;
  std::vector<std::string> checks;
  Texts urls;
  RecordingHost host;
  Dispatcher dispatcher{host, Table()};
};

TEST_F(DispatchTest, BadRequestsAreSilence) {
  for (const std::u16string& text :
       Texts{u"", u"{\"action\":\"ver", u"[]", u"7", u"{}", u"{\"action\":3}", Action("Play"),
             u"{\"action\":\"\"}", Action("dance"), Action("play"), Action("openUrl"),
             u"{\"action\":\"saveOptions\",\"values\":13}", u"{\"a\":1e999}"}) {
    dispatcher.DispatchPageMessage(text);
  }
  dispatcher.DispatchPageMessage(std::u16string(100000, u'['));
  EXPECT_TRUE(host.sent.empty());
  EXPECT_TRUE(host.calls.empty());
  EXPECT_TRUE(host.TakeEvents().empty());
}

TEST_F(DispatchTest, OneLongOperationAtATime) {
  dispatcher.NavigationCompleted();
  EXPECT_EQ(Sent(), Texts{u"options"});
  dispatcher.DispatchPageMessage(u"{\"action\":\"verify\"} trailing text");
  DeliverEvents();
  EXPECT_EQ(Sent(), Texts{u"{\"type\":\"status\",\"text\":\"Une operation est deja en cours.\"}"});
  dispatcher.NavigationCompleted();  // a reload of the page: no second run
  EXPECT_EQ(Sent(), Texts{u"options"});
  released.set_value();
  host.JoinWorkers();
  DeliverEvents();
  EXPECT_EQ(Sent(), Texts{u"{\"type\":\"ready\",\"canPlay\":true}"});

  for (const std::u16string& text : Texts{Action("verify"), Action("repair")}) {
    dispatcher.DispatchPageMessage(text);
    host.JoinWorkers();
  }
  EXPECT_EQ(checks, (std::vector<std::string>{"verify", "repair"}));
}

TEST_F(DispatchTest, ARequestRightAfterReadyIsAdmitted) {
  std::promise<void> asked;
  const std::shared_future<void> isAsked = asked.get_future().share();
  OperationTable table = Table();
  table.runCheckOperation = [&](HostWindow& window, bool) {
    PostReady(window, true);
    isAsked.wait();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));  // an operation that takes its time to end
  };
  RecordingHost quick;
  Dispatcher busy(quick, table);
  busy.DispatchPageMessage(Action("verify"));
  std::vector<UiEvent> events;
  while ((events = quick.TakeEvents()).empty()) std::this_thread::yield();
  asked.set_value();
  busy.DispatchPageMessage(Action("repair"));
  quick.JoinWorkers();
  for (const UiEvent& event : quick.TakeEvents()) busy.HandleUiEvent(event);
  EXPECT_EQ(quick.sent, Texts{u"{\"type\":\"ready\",\"canPlay\":true}"}) << "not refused";
}

TEST_F(DispatchTest, AWorkerThatCannotStartLeavesTheGuardFree) {
  host.refuseThreads = true;
  dispatcher.DispatchPageMessage(Action("verify"));
  DeliverEvents();
  EXPECT_EQ(
      Sent(),
      (Texts{u"{\"type\":\"check\",\"mode\":\"verify\",\"done\":true,\"error\":\"serveur injoignable\"}",
             u"{\"type\":\"ready\",\"canPlay\":false}"}));
  dispatcher.DispatchPageMessage(Action("getNews"));
  EXPECT_EQ(Sent(), Texts{u"{\"type\":\"news\",\"ok\":false}"});
  host.refuseThreads = false;
  dispatcher.DispatchPageMessage(Action("getNews"));  // raises: the process goes on
  dispatcher.DispatchPageMessage(Action("verify"));
  host.JoinWorkers();
  EXPECT_EQ(checks.size(), 1u);
  EXPECT_EQ(ReadWhole(game / "patcher_debug.txt"), "Exception in a worker : memory\r\n");
}

TEST_F(DispatchTest, PlayNeedsAReadyClient) {
  dispatcher.HandleUiEvent({0x8003, 2, 0});
  dispatcher.DispatchPageMessage(Action("play"));
  EXPECT_TRUE(host.calls.empty());
  dispatcher.HandleUiEvent({0x8003, 1, 0});
  dispatcher.DispatchPageMessage(Action("play"));
  EXPECT_EQ(host.calls, (std::vector<std::string>{"launch", "end"}));
  EXPECT_EQ(Sent(),
            (Texts{u"{\"type\":\"ready\",\"canPlay\":false}", u"{\"type\":\"ready\",\"canPlay\":true}"}));
}

TEST_F(DispatchTest, AnEndingLauncherTakesNoRequest) {
  OperationTable table = Table();
  Dispatcher* ending = nullptr;
  table.launchClient = [&] {
    host.calls.emplace_back("launch");
    ending->DispatchPageMessage(Action("play"));  // served by the loop of an error box
    throw std::bad_alloc();
  };
  Dispatcher playing(host, table);
  ending = &playing;
  playing.HandleUiEvent({0x8003, 1, 0});
  for (const std::u16string& text : Texts{Action("play"), Action("play"), Action("verify"),
                                          Action("windowMinimize"), Action("getOptions")}) {
    playing.DispatchPageMessage(text);
  }
  host.JoinWorkers();
  playing.HandleUiEvent({0x8004, 0, 0});  // a new launcher must not appear in front of the game
  EXPECT_EQ(host.calls, (std::vector<std::string>{"launch", "end"}));
  EXPECT_EQ(Sent(), Texts{u"{\"type\":\"ready\",\"canPlay\":true}"});
  EXPECT_TRUE(checks.empty());
}

TEST_F(DispatchTest, WindowActionsLinksAndOptions) {
  for (const std::u16string& text : Texts{Action("windowDrag"), Action("windowMinimize"),
                                          Action("windowMaximize"), Action("windowClose")}) {
    dispatcher.DispatchPageMessage(text);
  }
  EXPECT_EQ(host.calls, (std::vector<std::string>{"drag", "minimize", "maximize", "close"}));
  dispatcher.DispatchPageMessage(u"{\"action\":\"openUrl\",\"url\":\"https://x/\u00e9\"}");
  dispatcher.DispatchPageMessage(u"{\"action\":\"openUrl\",\"url\":5}");
  EXPECT_EQ(urls, (Texts{u"https://x/\u00e9", u""}));
  dispatcher.DispatchPageMessage(Action("saveOptions"));
  dispatcher.DispatchPageMessage(u"{\"action\":\"saveOptions\",\"values\":0}");
  dispatcher.DispatchPageMessage(u"{\"action\":\"saveOptions\",\"values\":1}");
  const Texts expected{u"{\"type\":\"optionsSaved\",\"ok\":false}",
                       u"{\"type\":\"optionsSaved\",\"ok\":false}",
                       u"{\"type\":\"optionsSaved\",\"ok\":true}", u"options"};
  EXPECT_EQ(Sent(), expected);
  dispatcher.DispatchPageMessage(Action("cancel"));
  EXPECT_EQ(host.calls.back(), "end");
}

}  // namespace
}  // namespace patcher
