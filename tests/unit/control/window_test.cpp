// The decisions of the main window that need no window.
#include <gtest/gtest.h>

#include "control/protocol/ui_event.h"
#include "control/recovery_limit.h"
#include "control/task_progress.h"
#include "control/window_drag.h"
#include "control/window_geometry.h"

namespace patcher {
namespace {

using platform::MaximizedPlacement;
using platform::Point;
using platform::Rect;
using platform::Size;
using platform::TaskProgress;
using platform::WindowPart;
using std::chrono::seconds;
using State = TaskProgress::State;
using Step = WindowDrag::Step;

platform::PointerState At(int x, int y, bool left, bool right, bool swapped) {
  return {{x, y}, left, right, swapped, {4, 6}};
}

TEST(WindowDrag, StartsAfterAPressedPointerHasMovedFarEnough) {
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

TEST(RecoveryLimit, AllowsThreeReloadsInTenMinutes) {
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

TEST(TaskProgress, ShowsAPercentageThenNothingOrAnError) {
  ProgressReport report;
  report.percent = 37;
  const auto after = [](UiEventKind kind, std::uintptr_t wParam, std::intptr_t lParam = 0) {
    return TaskProgressAfter({static_cast<std::uint32_t>(kind), wParam, lParam});
  };
  EXPECT_EQ(after(UiEventKind::UiProgress, 0, reinterpret_cast<std::intptr_t>(&report)),
            (TaskProgress{State::kNormal, 37}));
  EXPECT_EQ(after(UiEventKind::UiReady, 1), TaskProgress{});
  EXPECT_EQ(after(UiEventKind::UiReady, 0), (TaskProgress{State::kError, 100}));
  EXPECT_EQ(after(UiEventKind::UiServer, 0), std::nullopt);
}

TEST(WindowGeometry, ANewWindowIsCentredInTheWorkArea) {
  const struct {
    Rect workArea, expected;
  } kCases[] = {
      {{0, 40, 1920, 1080}, {320, 160, 1600, 960}},   {{0, 0, 1024, 700}, {0, 0, 1024, 700}},
      {{-1920, 0, 0, 1080}, {-1600, 140, -320, 940}}, {{0, 0, 1281, 801}, {0, 0, 1280, 800}},
      {{-1281, -801, 0, 0}, {-1281, -801, -1, -1}},   {{100, 0, 3940, 600}, {1380, 0, 2660, 600}},
  };
  for (const auto& [workArea, expected] : kCases) EXPECT_EQ(PlaceWindow(workArea), expected);
}

TEST(WindowGeometry, EdgesResizeTheWindow) {
  constexpr Rect kWindow{100, 100, 1100, 800};
  const struct {
    Point point;
    WindowPart expected;
  } kCases[] = {
      {{105, 105}, WindowPart::kTopLeft},      {{106, 105}, WindowPart::kTop},
      {{1094, 105}, WindowPart::kTopRight},    {{1093, 105}, WindowPart::kTop},
      {{100, 400}, WindowPart::kLeft},         {{106, 400}, WindowPart::kClient},
      {{1094, 400}, WindowPart::kRight},       {{1093, 400}, WindowPart::kClient},
      {{500, 794}, WindowPart::kBottom},       {{500, 793}, WindowPart::kClient},
      {{1099, 799}, WindowPart::kBottomRight}, {{105, 794}, WindowPart::kBottomLeft},
      {{500, 105}, WindowPart::kTop},          {{500, 106}, WindowPart::kClient},
  };
  for (const auto& [point, expected] : kCases) {
    EXPECT_EQ(HitTest(kWindow, point, false), expected) << point.x << "," << point.y;
    EXPECT_EQ(HitTest(kWindow, point, true), WindowPart::kClient) << point.x << "," << point.y;
  }
  EXPECT_EQ(HitTest({-1600, -900, -320, -100}, {-321, -101}, false), WindowPart::kBottomRight);
}

TEST(WindowGeometry, AMaximizedWindowHasNoBorderAndLeavesTheTaskBarVisible) {
  EXPECT_EQ(WebViewBounds({0, 0, 1280, 800}, false), (Rect{6, 6, 1274, 794}));
  EXPECT_EQ(WebViewBounds({0, 0, 1920, 1040}, true), (Rect{0, 0, 1920, 1040}));
  constexpr Rect kProposed{-8, -8, 1928, 1048};
  EXPECT_EQ(ClientArea(kProposed, false, {8, 7}), kProposed);
  EXPECT_EQ(ClientArea(kProposed, true, {8, 7}), (Rect{0, -1, 1920, 1041}));
  EXPECT_EQ(PlaceMaximized({0, 0, 1920, 1080}, {60, 0, 1920, 1080}),
            (MaximizedPlacement{{60, 0}, {1860, 1080}}));
  EXPECT_EQ(PlaceMaximized({-1920, 100, 0, 1180}, {-1920, 140, 0, 1180}),
            (MaximizedPlacement{{0, 40}, {1920, 1040}}));
}

TEST(WindowGeometry, TheSmallestWindowFitsTheScreenAndARestoredOneIsUnderThePointer) {
  EXPECT_EQ(MinimumWindow({0, 0, 1920, 1040}), (Size{1000, 640}));
  EXPECT_EQ(MinimumWindow({-1024, 40, 0, 600}), (Size{1000, 560}));
  EXPECT_EQ(MinimumWindow({0, 0, 800, 600}), (Size{800, 600}));
  EXPECT_EQ(RestoreUnderPointer({0, 0, 1920, 1040}, {1280, 800}, {960, 20}), (Rect{320, 0, 1600, 800}));
  EXPECT_EQ(RestoreUnderPointer({-1920, 40, 0, 1080}, {1000, 640}, {-1919, 50}),
            (Rect{-1919, 40, -919, 680}));
  EXPECT_EQ(RestoreUnderPointer({-1920, 40, 0, 1080}, {1000, 640}, {-1, 50}), (Rect{-1000, 40, 0, 680}));
}

}  // namespace
}  // namespace patcher
