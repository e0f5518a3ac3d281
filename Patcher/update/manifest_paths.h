#pragma once

#include <string_view>

#include "update/patch_manifest.h"

namespace patcher {

/// Whether a manifest path means a place below the install directory on every system: not absolute, no drive
/// letter, no component that leads upwards (".." and what Windows takes for it: several dots and blanks), no
/// control character.
bool StaysInside(std::string_view path);

/// Whether every path stays inside, and none is the temporary name (".part") of another: two workers could
/// write one file.
bool PathsAreUsable(const PatchManifest& manifest);

}  // namespace patcher
