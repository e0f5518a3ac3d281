#pragma once

#include "platform/window.h"

namespace patcher {

// The places of the main window and of the page in it. Pure arithmetic.

/// Width of the band along each edge that sizes the window; the page leaves it free.
inline constexpr int ResizeBorder = 6;
inline constexpr platform::Size kSmallestWindow{1000, 640};
inline constexpr platform::Size kPreferredWindow{1280, 800};

/// A new window: the preferred size or what the work area has of it, centred.
platform::Rect PlaceWindow(const platform::Rect& workArea);

/// The web view in a window with this client rectangle.
platform::Rect WebViewBounds(const platform::Rect& client, bool maximized);

/// `window` and `point` in screen coordinates. Nothing sizes a maximized window, and nothing is a caption:
/// the page asks for a move itself.
platform::WindowPart HitTest(const platform::Rect& window, platform::Point point, bool maximized);

/// The preferred smallest size, or what the work area has of it: the foot of the page stays on the screen.
platform::Size MinimumWindow(const platform::Rect& workArea);

/// Where a maximized window goes that is dragged by its title band: its restored size, under the pointer,
/// which stays at the same part of the width and the same distance from the top.
platform::Rect RestoreUnderPointer(const platform::Rect& maximized, platform::Size restored,
                                   platform::Point pointer);

/// On the work area and not over a task bar.
platform::MaximizedPlacement PlaceMaximized(const platform::Rect& monitor, const platform::Rect& workArea);

/// The whole of a restored window; a maximized one is laid out larger than its place by the frame that does
/// not show.
platform::Rect ClientArea(const platform::Rect& window, bool maximized, platform::Size frame);

}  // namespace patcher
