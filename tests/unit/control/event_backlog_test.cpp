#include "control/protocol/event_backlog.h"

#include <deque>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace patcher {
namespace {

/// A queue with little room.
class SmallQueue {
 public:
  bool Post(const UiEvent& event) {
    std::lock_guard guard(lock_);
    if (events_.size() >= 3) return false;
    events_.push_back(event);
    return true;
  }
  bool Take(UiEvent& event) {
    std::lock_guard guard(lock_);
    if (events_.empty()) return false;
    event = events_.front();
    events_.pop_front();
    return true;
  }

 private:
  std::mutex lock_;
  std::deque<UiEvent> events_;
};

TEST(EventBacklog, AFullQueueLosesNothingAndKeepsTheOrderOfEachThread) {
  SmallQueue queue;
  EventBacklog backlog([&queue](const UiEvent& event) { return queue.Post(event); });
  constexpr std::intptr_t kThreads = 3;
  constexpr std::intptr_t kEvents = 2000;
  std::vector<std::thread> posters;
  for (std::intptr_t thread = 0; thread < kThreads; ++thread) {
    posters.emplace_back([&backlog, number = static_cast<std::uint32_t>(thread)] {
      for (std::intptr_t i = 0; i < kEvents; ++i) backlog.Post({number, 0, i});
    });
  }
  std::intptr_t next[kThreads] = {};
  for (std::intptr_t taken = 0; taken < kThreads * kEvents;) {
    UiEvent event;
    if (queue.Take(event)) {
      EXPECT_EQ(event.lParam, next[event.number]++);
      ++taken;
    }
    backlog.Advance();
  }
  for (std::thread& poster : posters) poster.join();
  UiEvent none;
  EXPECT_FALSE(queue.Take(none));
}

}  // namespace
}  // namespace patcher
