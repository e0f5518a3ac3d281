#pragma once

namespace platform {

// Places and sizes on the screen. Windows: physical pixels. Linux: the units of the window system, each
// several pixels on a scaled screen.

struct Point {
  int x = 0;
  int y = 0;
  bool operator==(const Point&) const = default;
};

struct Size {
  int width = 0;
  int height = 0;
  bool operator==(const Size&) const = default;
};

/// `right` and `bottom` are one past the last pixel.
struct Rect {
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;
  int Width() const { return right - left; }
  int Height() const { return bottom - top; }
  bool operator==(const Rect&) const = default;
};

}  // namespace platform
