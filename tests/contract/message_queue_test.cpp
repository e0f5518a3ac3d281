#include "platform/message_queue.h"

#include <cstdint>
#include <limits>
#include <map>
#include <thread>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

namespace platform {
namespace {

TEST(MessageQueueContract, CarriesEveryBitAndEndsWithTheCode) {
  const QueueMessage kThird{0xBFFF, 0x80000000u, std::numeric_limits<std::intptr_t>::max()};
  const QueueMessage sent[] = {
      {0x8000, 0, 0},
      {0x8007, std::numeric_limits<std::uintptr_t>::max(), std::numeric_limits<std::intptr_t>::min()},
      kThird,
  };
  std::vector<QueueMessage> got;
  MessageQueue* running = nullptr;
  MessageQueue queue([&](const QueueMessage& message) {
    got.push_back(message);
    EXPECT_TRUE(got.size() != 2 || running->Post(kThird));
    if (got.size() == 3) running->Quit(42);
  });
  running = &queue;
  for (const QueueMessage& message : {sent[0], sent[1]}) EXPECT_TRUE(queue.Post(message));
  EXPECT_EQ(queue.Run(), 42);
  ASSERT_EQ(got.size(), 3u);
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(std::tie(got[i].number, got[i].wParam, got[i].lParam),
              std::tie(sent[i].number, sent[i].wParam, sent[i].lParam));
  }
}

TEST(MessageQueueContract, KeepsTheOrderOfEachPoster) {
  constexpr std::uintptr_t kPosters = 4;
  constexpr std::intptr_t kEach = 1500;  // together within what Windows queues at most
  std::map<std::uintptr_t, std::intptr_t> next;
  constexpr std::uint32_t kItem = 0x8001;
  constexpr std::uint32_t kLast = 0x8002;
  std::uintptr_t ended = 0;
  bool inOrder = true;
  bool onOwnThread = true;
  const auto self = std::this_thread::get_id();
  MessageQueue* running = nullptr;
  MessageQueue queue([&](const QueueMessage& message) {
    onOwnThread = onOwnThread && std::this_thread::get_id() == self;
    if (message.number == kItem) {
      inOrder = inOrder && next[message.wParam]++ == message.lParam;
    } else if (++ended == kPosters) {
      running->Quit(0);
    }
  });
  running = &queue;
  std::vector<std::thread> posters;
  for (std::uintptr_t poster = 0; poster < kPosters; ++poster) {
    posters.emplace_back([&queue, poster] {
      for (std::intptr_t i = 0; i < kEach; ++i) EXPECT_TRUE(queue.Post({kItem, poster, i}));
      EXPECT_TRUE(queue.Post({kLast, poster, 0}));
    });
  }
  EXPECT_EQ(queue.Run(), 0);
  for (std::thread& poster : posters) poster.join();
  EXPECT_TRUE(inOrder);
  EXPECT_TRUE(onOwnThread);
  for (std::uintptr_t poster = 0; poster < kPosters; ++poster) EXPECT_EQ(next[poster], kEach);
}

}  // namespace
}  // namespace platform
