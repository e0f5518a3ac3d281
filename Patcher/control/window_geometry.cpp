#include "control/window_geometry.h"

#include <algorithm>
#include <cstdint>

namespace patcher {

using platform::MaximizedPlacement;
using platform::Point;
using platform::Rect;
using platform::Size;
using platform::WindowPart;

namespace {

Rect Shrink(const Rect& rect, int horizontally, int vertically) {
  return {rect.left + horizontally, rect.top + vertically, rect.right - horizontally,
          rect.bottom - vertically};
}

Size FitInto(const Rect& area, Size size) {
  return {std::min(size.width, area.Width()), std::min(size.height, area.Height())};
}

}  // namespace

Rect PlaceWindow(const Rect& workArea) {
  const Size size = FitInto(workArea, kPreferredWindow);
  const int left = workArea.left + (workArea.Width() - size.width) / 2;
  const int top = workArea.top + (workArea.Height() - size.height) / 2;
  return {left, top, left + size.width, top + size.height};
}

Rect WebViewBounds(const Rect& client, bool maximized) {
  return maximized ? client : Shrink(client, ResizeBorder, ResizeBorder);
}

WindowPart HitTest(const Rect& window, Point point, bool maximized) {
  if (maximized) return WindowPart::kClient;
  const bool inLeft = point.x < window.left + ResizeBorder;
  const bool inRight = point.x >= window.right - ResizeBorder;
  const bool inTop = point.y < window.top + ResizeBorder;
  const bool inBottom = point.y >= window.bottom - ResizeBorder;
  if (inTop && inLeft) return WindowPart::kTopLeft;
  if (inTop && inRight) return WindowPart::kTopRight;
  if (inBottom && inLeft) return WindowPart::kBottomLeft;
  if (inBottom && inRight) return WindowPart::kBottomRight;
  if (inLeft) return WindowPart::kLeft;
  if (inRight) return WindowPart::kRight;
  if (inTop) return WindowPart::kTop;
  if (inBottom) return WindowPart::kBottom;
  return WindowPart::kClient;
}

Size MinimumWindow(const Rect& workArea) { return FitInto(workArea, kSmallestWindow); }

Rect RestoreUnderPointer(const Rect& maximized, Size restored, Point pointer) {
  const std::int64_t across = pointer.x - maximized.left;
  const int left = pointer.x - static_cast<int>(across * restored.width / std::max(1, maximized.Width()));
  return {left, maximized.top, left + restored.width, maximized.top + restored.height};
}

MaximizedPlacement PlaceMaximized(const Rect& monitor, const Rect& workArea) {
  return {{workArea.left - monitor.left, workArea.top - monitor.top}, {workArea.Width(), workArea.Height()}};
}

Rect ClientArea(const Rect& window, bool maximized, Size frame) {
  return maximized ? Shrink(window, frame.width, frame.height) : window;
}

}  // namespace patcher
