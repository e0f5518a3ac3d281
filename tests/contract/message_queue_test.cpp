#include "platform/message_queue.h"

#include <cstdint>
#include <limits>
#include <tuple>

#include <gtest/gtest.h>

namespace platform {
namespace {

TEST(MessageQueueContract, MessagesKeepEveryBitAndRunReturnsTheCode) {
  const QueueMessage sent[] = {
      {0x8000, 0, 0},
      {0x8007, std::numeric_limits<std::uintptr_t>::max(), std::numeric_limits<std::intptr_t>::min()},
      {0xBFFF, 0x80000000u, std::numeric_limits<std::intptr_t>::max()},
  };
  std::size_t count = 0;
  MessageQueue* running = nullptr;
  MessageQueue queue([&](const QueueMessage& got) {
    const QueueMessage& expected = sent[count++];
    EXPECT_EQ(std::tie(got.number, got.wParam, got.lParam),
              std::tie(expected.number, expected.wParam, expected.lParam));
    EXPECT_TRUE(count != 2 || running->Post(sent[2]));
    if (count == 3) running->Quit(42);
  });
  running = &queue;
  for (const QueueMessage& message : {sent[0], sent[1]}) EXPECT_TRUE(queue.Post(message));
  EXPECT_EQ(queue.Run(), 42);
  EXPECT_EQ(count, 3u);
}

}  // namespace
}  // namespace platform
