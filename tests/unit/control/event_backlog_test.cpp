#include "control/protocol/event_backlog.h"

#include <deque>
#include <mutex>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace patcher {
namespace {

TEST(EventBacklog, AFullQueueLosesNothingAndKeepsTheOrderOfEachThread) {
  std::mutex lock;
  std::deque<UiEvent> queue;  // with little room
  EventBacklog backlog([&](const UiEvent& event) {
    std::lock_guard guard(lock);
    if (queue.size() >= 3) return false;
    queue.push_back(event);
    return true;
  });
  constexpr std::intptr_t kThreads = 3;
  constexpr std::intptr_t kEvents = 2000;
  std::vector<std::thread> posters;
  for (std::uint32_t number = 0; number < kThreads; ++number) {
    posters.emplace_back([&backlog, number] {
      for (std::intptr_t i = 0; i < kEvents; ++i) backlog.Post({number, 0, i});
    });
  }
  std::intptr_t next[kThreads] = {};
  for (std::intptr_t taken = 0; taken < kThreads * kEvents; backlog.Advance()) {
    std::lock_guard guard(lock);
    if (queue.empty()) continue;
    EXPECT_EQ(queue.front().lParam, next[queue.front().number]++);
    queue.pop_front();
    ++taken;
  }
  for (std::thread& poster : posters) poster.join();
  EXPECT_TRUE(queue.empty());
}

}  // namespace
}  // namespace patcher
