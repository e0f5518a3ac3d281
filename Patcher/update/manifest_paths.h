#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "update/local_manifest.h"
#include "update/patch_manifest.h"

namespace patcher {

/// Whether a manifest path means a place below the install directory on every system: not absolute, no drive
/// letter, no component that leads upwards (".." and what Windows takes for it: several dots and blanks), no
/// control character.
[[nodiscard]] bool StaysInside(std::string_view path);

/// Whether the launcher can install what the manifest lists: every path stays inside and means a file of its
/// own on this system; no two that differ mean the same file, and none means the place beside another where
/// that one arrives (".part") or moves when it is in use (".old"); none means a file that only the launcher
/// writes: its record, its configuration, its log, its other executables. Otherwise the record could name
/// a file that another one has replaced. The same path may be listed twice: the last entry counts.
[[nodiscard]] bool PathsAreUsable(const PatchManifest& manifest);

/// Of the paths that the record knows, those whose file may change when `files` are installed: a file of
/// them, perhaps spelled in another way, or the place beside one (".part", ".old").
std::vector<std::string> PathsThatChange(const LocalState& known, const std::vector<const PatchFile*>& files);

}  // namespace patcher
