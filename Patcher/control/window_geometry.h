#pragma once

#include "platform/window.h"

namespace patcher {

// Where the main window is on the screen and where the page is in it. Pure functions.

/// Width in pixels of the band along each edge that resizes the window. The page does not cover it.
inline constexpr int ResizeBorder = 6;
inline constexpr platform::Size kSmallestWindow{1000, 640};
inline constexpr platform::Size kPreferredWindow{1280, 800};

/// The place of a new window: centred, in the preferred size or smaller if the work area is smaller.
platform::Rect PlaceWindow(const platform::Rect& workArea);

/// The place of the web view in a window with this client rectangle.
platform::Rect WebViewBounds(const platform::Rect& client, bool maximized);

/// `window` and `point` are in screen coordinates. A maximized window has no edges that resize it. No part is
/// a caption, since the page requests moves itself.
platform::WindowPart HitTest(const platform::Rect& window, platform::Point point, bool maximized);

/// The smallest size of the window, or less if the work area is smaller, so that the bottom of the page stays
/// on the screen.
platform::Size MinimumWindow(const platform::Rect& workArea);

/// The place of a maximized window when a drag by the title band restores it: in its restored size, so that
/// the pointer keeps its relative horizontal position and its distance from the top.
platform::Rect RestoreUnderPointer(const platform::Rect& maximized, platform::Size restored,
                                   platform::Point pointer);

/// Fills the work area, so that the task bar stays visible.
platform::MaximizedPlacement PlaceMaximized(const platform::Rect& monitor, const platform::Rect& workArea);

/// The client area: all of a restored window. The system makes a maximized window larger than its visible
/// part by the width of the frame.
platform::Rect ClientArea(const platform::Rect& window, bool maximized, platform::Size frame);

}  // namespace patcher
