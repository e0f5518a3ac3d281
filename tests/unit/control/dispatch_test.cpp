#include "control/dispatch.h"

#include <deque>
#include <future>
#include <thread>

#include <gtest/gtest.h>

#include "control/protocol/event_backlog.h"
#include "support/recording_host.h"
#include "support/scratch_directory.h"
#include "update/install_lock.h"
#include "update/update_run.h"

namespace patcher {
namespace {

using Texts = std::vector<std::u16string>;

std::u16string Action(const std::u16string& name) { return u"{\"action\":\"" + name + u"\"}"; }
std::u16string Ready(bool canPlay) {
  return std::u16string(u"{\"type\":\"ready\",\"canPlay\":") + (canPlay ? u"true}" : u"false}");
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

  void Dispatch(const Texts& requests) {
    for (const std::u16string& text : requests) dispatcher.DispatchPageMessage(text);
  }

  /// The messages to the page since the last call.
  Texts Sent() {
    for (const UiEvent& event : host.TakeEvents()) dispatcher.HandleUiEvent(event);
    return std::exchange(host.sent, {});
  }

  const ScratchDirectory game;
  std::promise<void> released;
  std::vector<std::string> checks;
  Texts urls;
  RecordingHost host;
  Dispatcher dispatcher{host, Table()};
};

TEST_F(DispatchTest, OneLongOperationAtATime) {
  dispatcher.NavigationCompleted();
  Dispatch({u"{\"action\":\"verify\"} trailing text"});
  dispatcher.NavigationCompleted();  // a reload of the page: no second run
  EXPECT_EQ(Sent(), (Texts{u"options", u"options",
                           u"{\"type\":\"status\",\"text\":\"Une operation est deja en cours.\"}"}));
  released.set_value();
  host.JoinWorkers();
  EXPECT_EQ(Sent(), Texts{Ready(true)});
  for (const char16_t* action : {u"verify", u"repair"}) {
    Dispatch({Action(action)});
    host.JoinWorkers();
  }
  EXPECT_EQ(checks, (std::vector<std::string>{"verify", "repair"}));
}

TEST_F(DispatchTest, ARequestRightAfterReadyIsAccepted) {
  std::promise<void> asked;
  OperationTable table = Table();
  table.runCheckOperation = [&](HostWindow& window, bool repair) {
    PostReady(window, true);
    if (!repair) asked.get_future().wait();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));  // an operation that ends slowly
  };
  Dispatcher busy(host, table);
  busy.DispatchPageMessage(Action(u"verify"));
  while (host.TakeEvents().empty()) std::this_thread::yield();
  asked.set_value();
  busy.DispatchPageMessage(Action(u"repair"));
  host.JoinWorkers();
  EXPECT_EQ(Sent(), Texts{Ready(true)}) << "not refused";
}

TEST_F(DispatchTest, AFailedThreadStartReleasesTheGuard) {
  host.refuseThreads = true;
  Dispatch({Action(u"verify"), Action(u"getNews")});
  EXPECT_EQ(
      Sent(),
      (Texts{u"{\"type\":\"news\",\"ok\":false}",
             u"{\"type\":\"check\",\"mode\":\"verify\",\"done\":true,\"error\":\"serveur injoignable\"}",
             Ready(false)}));
  host.refuseThreads = false;
  Dispatch({Action(u"getNews"), Action(u"verify")});  // the first raises: the process goes on
  host.JoinWorkers();
  EXPECT_EQ(checks.size(), 1u);
  EXPECT_EQ(ReadWhole(game / "patcher_debug.txt"), "Exception in a worker : memory\r\n");
}

TEST_F(DispatchTest, AnEndingLauncherIgnoresRequests) {
  OperationTable table = Table();
  Dispatcher* ending = nullptr;
  table.launchClient = [&] {
    host.calls.emplace_back("launch");
    ending->DispatchPageMessage(Action(u"play"));  // handled by the loop of an error box
    throw std::bad_alloc();
  };
  Dispatcher playing(host, table);
  ending = &playing;
  playing.HandleUiEvent({0x8003, 2, 0});
  playing.DispatchPageMessage(Action(u"play"));  // no ready client
  playing.HandleUiEvent({0x8003, 1, 0});
  for (const char16_t* action : {u"play", u"play", u"verify", u"windowMinimize", u"getOptions"}) {
    playing.DispatchPageMessage(Action(action));
  }
  host.JoinWorkers();
  playing.HandleUiEvent({0x8004, 0, 0});  // a new launcher must not appear in front of the game
  EXPECT_EQ(host.calls, (std::vector<std::string>{"launch", "end"}));
  EXPECT_EQ(Sent(), (Texts{Ready(false), Ready(true)}));
  EXPECT_TRUE(checks.empty());
}

TEST_F(DispatchTest, WindowActionsLinksOptionsAndBadRequests) {
  Dispatch({Action(u"windowDrag"), Action(u"windowMinimize"), Action(u"windowMaximize"),
            Action(u"windowClose"), u"{\"action\":\"openUrl\",\"url\":\"https://x/\u00e9\"}",
            u"{\"action\":\"openUrl\",\"url\":5}", Action(u"openUrl"), Action(u"saveOptions"),
            u"{\"action\":\"saveOptions\",\"values\":13}", u"{\"action\":3}", u"{\"a\":1e999}",
            u"{\"action\":\"saveOptions\",\"values\":0}", u"{\"action\":\"saveOptions\",\"values\":1}",
            Action(u"cancel")});
  EXPECT_EQ(host.calls, (std::vector<std::string>{"drag", "minimize", "maximize", "close", "end"}));
  EXPECT_EQ(urls, (Texts{u"https://x/\u00e9", u""}));
  const std::u16string refused = u"{\"type\":\"optionsSaved\",\"ok\":false}";
  EXPECT_EQ(Sent(), (Texts{refused, refused, u"{\"type\":\"optionsSaved\",\"ok\":true}", u"options"}));
}

TEST_F(DispatchTest, ARunWithoutTheDirectoryLockEndsLikeAnOfflineRun) {
  WriteWhole(game / "left.old", "");
  platform::DirectoryLock other(ExeDir());
  ASSERT_TRUE(other.TakeWithin(std::chrono::milliseconds(0)));
  UpdateStages stages;
  stages.clientExists = [] { return true; };
  stages.lockTimeout = std::chrono::milliseconds(1);
  host.StartThread([&] { RunUpdate(host, stages); });
  host.JoinWorkers();
  const std::u16string status = u"{\"type\":\"status\",\"text\":\"Une autre instance du lanceur ";
  EXPECT_EQ(Sent(), (Texts{status + u"met le jeu a jour, attente...\"}",
                           status + u"occupe toujours le dossier du jeu.\"}", Ready(true)}));
  EXPECT_TRUE(std::filesystem::exists(game / "left.old")) << "no cleanup";
}

TEST(EventBacklog, AFullQueueLosesNothingAndKeepsTheOrder) {
  std::deque<std::intptr_t> queue;  // with room for three
  EventBacklog backlog([&](const UiEvent& event) {
    if (queue.size() == 3) return false;
    queue.push_back(event.lParam);
    return true;
  });
  for (std::intptr_t i = 0; i < 10; ++i) {
    backlog.Post({0, 0, i});
    if (i == 5) queue.pop_front();  // room again, but earlier events wait
  }
  for (std::intptr_t taken = 1; taken < 10; ++taken, backlog.Advance()) {
    ASSERT_FALSE(queue.empty());
    EXPECT_EQ(queue.front(), taken);
    queue.pop_front();
  }
}

}  // namespace
}  // namespace patcher
