#include "platform/display.h"

#include <gtest/gtest.h>

namespace platform {
namespace {

TEST(DisplayTest, SizesAreUsable) {
  const ScreenSize screen = PrimaryScreenSize();
  EXPECT_GE(screen.width, 1);
  EXPECT_GE(screen.height, 1);
  const ScreenSize largest = LargestDisplayMode();
  EXPECT_EQ(largest.width > 0, largest.height > 0);
  EXPECT_GE(largest.width, 0);
}

}  // namespace
}  // namespace platform
