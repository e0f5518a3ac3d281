#pragma once

#include <compare>
#include <cstdint>

namespace platform {

struct ScreenSize {
  std::int32_t width = 0;  ///< pixels
  std::int32_t height = 0;

  /// By width, then by height.
  auto operator<=>(const ScreenSize&) const = default;  // NOLINT(modernize-use-nullptr): the compiler's own 0
};

/// The largest width and the largest height among the display's modes; the two may come from different modes.
/// Windows: the modes of the primary display, 0 x 0 if the system reports none. Linux: the modes of all
/// connected displays that the kernel's graphics drivers list, because no display is primary without a window
/// system; kUsualScreen if they list none (a server, a container, some drivers).
ScreenSize LargestDisplayMode();

/// Current size of the primary screen. Linux: the preferred mode of the first connected display, or
/// kUsualScreen.
ScreenSize PrimaryScreenSize();

/// The most common screen size among players.
inline constexpr ScreenSize kUsualScreen{1920, 1080};

}  // namespace platform
