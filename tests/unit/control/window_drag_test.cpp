#include "control/window_drag.h"

#include <gtest/gtest.h>

namespace patcher {
namespace {

using Step = WindowDrag::Step;

platform::PointerState At(int x, int y, bool left, bool right, bool swapped) {
  return {{x, y}, left, right, swapped, {4, 6}};
}

TEST(WindowDrag, OnlyAPressedPointerThatMovesFarEnoughMovesTheWindow) {
  const struct {
    int x, y;
    Step expected;
  } kCases[] = {{-100, 50, Step::kWait}, {-97, 55, Step::kWait},  {-103, 45, Step::kWait},
                {-96, 50, Step::kMove},  {-104, 50, Step::kMove}, {-100, 56, Step::kMove},
                {-100, 44, Step::kMove}, {900, 900, Step::kMove}};
  for (const bool swapped : {false, true}) {
    WindowDrag drag;
    EXPECT_FALSE(drag.Begin(At(-100, 50, swapped, !swapped, swapped)));  // the other button
    EXPECT_TRUE(drag.Begin(At(-100, 50, !swapped, swapped, swapped)));
    for (const auto& [x, y, expected] : kCases) {
      EXPECT_EQ(drag.Follow(At(x, y, !swapped, swapped, swapped)), expected) << x << "," << y;
      EXPECT_EQ(drag.Follow(At(x, y, swapped, !swapped, swapped)), Step::kEnd);
    }
  }
}

}  // namespace
}  // namespace patcher
