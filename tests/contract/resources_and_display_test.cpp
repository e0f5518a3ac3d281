#include <span>
#include <string>

#include <gtest/gtest.h>

#include "platform/display.h"
#include "platform/resources.h"

namespace platform {
namespace {

std::string Text(std::span<const std::byte> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

TEST(ResourcesContract, EachNumberHasItsOwnBytes) {
  const std::string first = Text(EmbeddedResource(7));
  EXPECT_EQ(first.size(), 256u * 2);
  for (std::size_t i = 0; i < first.size(); ++i)
    ASSERT_EQ(static_cast<unsigned char>(first[i]), i % 256) << i;
  EXPECT_EQ(Text(EmbeddedResource(65535)), "last, without a line end");
  EXPECT_EQ(EmbeddedResource(7).data(), EmbeddedResource(7).data()) << "no copy each time";
  for (const int missing : {1, 8, 300}) EXPECT_TRUE(EmbeddedResource(missing).empty()) << missing;
}

TEST(DisplayContract, SizesAreUsable) {
  const ScreenSize screen = PrimaryScreenSize();
  EXPECT_TRUE(screen.width >= 1 && screen.height >= 1);
  const ScreenSize largest = LargestDisplayMode();
  EXPECT_TRUE(largest.width >= 0 && (largest.width > 0) == (largest.height > 0));
}

}  // namespace
}  // namespace platform
