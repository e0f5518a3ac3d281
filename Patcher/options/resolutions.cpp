#include "options/resolutions.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace patcher {
namespace {

using platform::ScreenSize;

constexpr std::array<ScreenSize, 15> kSizes{{
    {800, 600},
    {1024, 768},
    {1152, 864},
    {1280, 720},
    {1280, 800},
    {1280, 1024},
    {1366, 768},
    {1440, 900},
    {1600, 900},
    {1600, 1200},
    {1680, 1050},
    {1920, 1080},
    {1920, 1200},
    {2560, 1440},
    {3840, 2160},
}};

}  // namespace

std::vector<ScreenSize> ListResolutions(ScreenSize largest, ScreenSize current) {
  // The smallest size is always offered.
  const ScreenSize limit{std::max(largest.width, kSizes[0].width),
                         std::max(largest.height, kSizes[0].height)};
  std::vector<ScreenSize> sizes;
  std::copy_if(kSizes.begin(), kSizes.end(), std::back_inserter(sizes), [&](const ScreenSize& size) {
    return size.width <= limit.width && size.height <= limit.height;
  });
  const auto place = std::lower_bound(sizes.begin(), sizes.end(), current);
  const bool listed = place != sizes.end() && *place == current;
  if (current.width >= 1 && current.height >= 1 && !listed) sizes.insert(place, current);
  return sizes;
}

std::vector<ScreenSize> ListResolutions(std::int32_t currentWidth, std::int32_t currentHeight) {
  return ListResolutions(platform::LargestDisplayMode(), {currentWidth, currentHeight});
}

}  // namespace patcher
