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

/// The largest width and the largest height among the modes that the display offers; the two may come from
/// different modes. 0 x 0 if the system does not report any. Windows: the primary display. Linux: all
/// connected displays together, as the kernel's graphics drivers list them, since no display is primary
/// without a window system; where they list none (a server, a container, some drivers), kUsualScreen.
ScreenSize LargestDisplayMode();

/// Size of the primary screen as it is set now. Linux: the preferred mode of the first connected display, or
/// kUsualScreen.
ScreenSize PrimaryScreenSize();

/// What most players have.
inline constexpr ScreenSize kUsualScreen{1920, 1080};

}  // namespace platform
