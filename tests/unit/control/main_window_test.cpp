// What the main window decides, for itself and for the page in it.
#include <gtest/gtest.h>

#include "control/protocol/ui_event.h"
#include "control/recovery_limit.h"
#include "control/task_progress.h"
#include "control/window_drag.h"

namespace patcher {
namespace {

using platform::TaskProgress;
using std::chrono::seconds;
using State = TaskProgress::State;
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

TEST(RecoveryLimit, ThreeTimesInAnyTenMinutes) {
  const struct {
    seconds at;
    bool expected;
  } kCases[] = {{seconds(0), true},    {seconds(1), true},   {seconds(300), true},  {seconds(300), false},
                {seconds(599), false}, {seconds(600), true}, {seconds(600), false}, {seconds(601), true},
                {seconds(899), false}, {seconds(900), true}, {seconds(90000), true}};
  RecoveryLimit limit;
  for (const auto& [at, expected] : kCases) {
    EXPECT_EQ(limit.Take(RecoveryLimit::TimePoint(at)), expected) << at.count();
  }
}

TEST(TaskProgress, APercentageThenNothingOrAnError) {
  ProgressReport report;
  report.percent = 37;
  const auto number = [](UiEventKind kind) { return static_cast<std::uint32_t>(kind); };
  EXPECT_EQ(TaskProgressAfter({number(UiEventKind::UiProgress), 0, reinterpret_cast<std::intptr_t>(&report)}),
            (TaskProgress{State::kNormal, 37}));
  EXPECT_EQ(TaskProgressAfter({number(UiEventKind::UiReady), 1}), TaskProgress{});
  EXPECT_EQ(TaskProgressAfter({number(UiEventKind::UiReady), 0}), (TaskProgress{State::kError, 100}));
  EXPECT_EQ(TaskProgressAfter({number(UiEventKind::UiServer), 0}), std::nullopt);
}

}  // namespace
}  // namespace patcher
