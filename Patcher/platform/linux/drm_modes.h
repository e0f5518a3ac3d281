#pragma once

#include <filesystem>
#include <vector>

#include "platform/display.h"

namespace platform {

/// Modes of every connected display, connectors in the order of their names, each with its preferred mode
/// first. `root` is the kernel's list of connectors, /sys/class/drm: one directory for each with the files
/// "status" and "modes", the latter with one "1920x1080" a line.
std::vector<ScreenSize> ReadDrmModes(const std::filesystem::path& root);

}  // namespace platform
