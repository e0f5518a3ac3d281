#include "control/window_geometry.h"

#include <gtest/gtest.h>

namespace patcher {
namespace {

using platform::MaximizedPlacement;
using platform::Point;
using platform::Rect;
using platform::Size;
using platform::WindowPart;

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

TEST(WindowGeometry, TheEdgesOfAWindowSizeIt) {
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
  EXPECT_EQ(HitTest({-1600, -900, -320, -100}, {-1598, -500}, false), WindowPart::kLeft);
  EXPECT_EQ(HitTest({-1600, -900, -320, -100}, {-321, -101}, false), WindowPart::kBottomRight);
}

TEST(WindowGeometry, ThePageLeavesARingThatAMaximizedWindowDoesNotNeed) {
  EXPECT_EQ(WebViewBounds({0, 0, 1280, 800}, false), (Rect{6, 6, 1274, 794}));
  EXPECT_EQ(WebViewBounds({0, 0, 1920, 1040}, true), (Rect{0, 0, 1920, 1040}));
}

TEST(WindowGeometry, TheSmallestWindowFitsOnTheScreen) {
  EXPECT_EQ(MinimumWindow({0, 0, 1920, 1040}), (Size{1000, 640}));
  EXPECT_EQ(MinimumWindow({-1024, 40, 0, 600}), (Size{1000, 560}));
  EXPECT_EQ(MinimumWindow({0, 0, 800, 600}), (Size{800, 600}));
}

TEST(WindowGeometry, AMaximizedWindowIsRestoredUnderThePointer) {
  EXPECT_EQ(RestoreUnderPointer({0, 0, 1920, 1040}, {1280, 800}, {960, 20}), (Rect{320, 0, 1600, 800}));
  EXPECT_EQ(RestoreUnderPointer({-1920, 40, 0, 1080}, {1000, 640}, {-1919, 50}),
            (Rect{-1919, 40, -919, 680}));
  EXPECT_EQ(RestoreUnderPointer({-1920, 40, 0, 1080}, {1000, 640}, {-1, 50}), (Rect{-1000, 40, 0, 680}));
}

TEST(WindowGeometry, AMaximizedWindowLeavesTheTaskBarFree) {
  const struct {
    Rect monitor, workArea;
    MaximizedPlacement expected;
  } kCases[] = {
      {{0, 0, 1920, 1080}, {0, 0, 1920, 1040}, {{0, 0}, {1920, 1040}}},
      {{0, 0, 1920, 1080}, {60, 0, 1920, 1080}, {{60, 0}, {1860, 1080}}},
      {{-1920, 100, 0, 1180}, {-1920, 140, 0, 1180}, {{0, 40}, {1920, 1040}}},
  };
  for (const auto& [monitor, workArea, expected] : kCases) {
    EXPECT_EQ(PlaceMaximized(monitor, workArea), expected);
  }
}

TEST(WindowGeometry, TheFrameOfAMaximizedWindowStaysOutside) {
  constexpr Rect kProposed{-8, -8, 1928, 1048};
  EXPECT_EQ(ClientArea(kProposed, false, {8, 7}), kProposed);
  EXPECT_EQ(ClientArea(kProposed, true, {8, 7}), (Rect{0, -1, 1920, 1041}));
}

}  // namespace
}  // namespace patcher
