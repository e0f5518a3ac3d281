#pragma once

#include <filesystem>
#include <vector>

#include "platform/display.h"

namespace platform {

/// Modes of every connected display. Connectors are sorted by name; each display's preferred mode comes
/// first. `root` is the kernel's list of connectors, /sys/class/drm: one directory per connector with the
/// files "status" and "modes", which has one mode such as "1920x1080" per line.
std::vector<ScreenSize> ReadDrmModes(const std::filesystem::path& root);

}  // namespace platform
