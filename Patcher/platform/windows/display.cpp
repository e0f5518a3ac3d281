#include <windows.h>

#include "platform/display.h"

#include <algorithm>

namespace platform {

ScreenSize LargestDisplayMode() {
  ScreenSize largest;
  DEVMODEW mode{};
  mode.dmSize = sizeof mode;
  for (DWORD index = 0; EnumDisplaySettingsW(nullptr, index, &mode); ++index) {
    largest.width = std::max(largest.width, static_cast<std::int32_t>(mode.dmPelsWidth));
    largest.height = std::max(largest.height, static_cast<std::int32_t>(mode.dmPelsHeight));
  }
  return largest;
}

ScreenSize PrimaryScreenSize() { return {GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)}; }

}  // namespace platform
