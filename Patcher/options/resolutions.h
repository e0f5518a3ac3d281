#pragma once

#include <cstdint>
#include <vector>

#include "platform/display.h"

namespace patcher {

/// The screen sizes that the page offers, in ascending order and without duplicates: the sizes of a fixed
/// list that fit the display, and the current size. Main thread.
std::vector<platform::ScreenSize> ListResolutions(std::int32_t currentWidth, std::int32_t currentHeight);

/// The same for a display whose largest mode is `largest`. A current size below 1 is omitted.
std::vector<platform::ScreenSize> ListResolutions(platform::ScreenSize largest, platform::ScreenSize current);

}  // namespace patcher
