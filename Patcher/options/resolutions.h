#pragma once

#include <cstdint>
#include <vector>

#include "platform/display.h"

namespace patcher {

/// The screen sizes that the page offers: those of a fixed list that fit the display, and the current size,
/// ascending, without duplicates. Main thread.
std::vector<platform::ScreenSize> ListResolutions(std::int32_t currentWidth, std::int32_t currentHeight);

/// The same for a display whose modes reach to `largest`. A current size below 1 is left out.
std::vector<platform::ScreenSize> ListResolutions(platform::ScreenSize largest, platform::ScreenSize current);

}  // namespace patcher
