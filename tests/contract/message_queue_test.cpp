#include "platform/message_queue.h"

#include <cstdint>
#include <limits>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

namespace platform {
namespace {

TEST(MessageQueueContract, MessagesKeepEveryBitAndRunReturnsTheCode) {
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

}  // namespace
}  // namespace platform
