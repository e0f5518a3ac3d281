#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "update/local_manifest.h"
#include "update/patch_manifest.h"

namespace patcher {

/// Whether a manifest path is below the install directory on every system. It is not absolute and has no
/// drive letter, no control character, and no component that leads upwards ("..", or several dots and blanks,
/// which Windows treats like it).
[[nodiscard]] bool StaysInside(std::string_view path);

/// Whether the launcher can install the files of the manifest. Every path is below the install directory and
/// can name a file on this system. No two different paths mean the same file. No path means the temporary
/// (".part") or renamed (".old") copy of another file, or a file that only the launcher writes: its record,
/// its configuration, its log, its other executables. Otherwise the record could name a file that another one
/// has replaced. No path is the name of a directory with the player's own files. The same path may be listed
/// twice: the last entry counts.
[[nodiscard]] bool PathsAreUsable(const PatchManifest& manifest);

/// The paths of the record whose files may change when `files` are installed: paths of these files, also in
/// another spelling, and of their temporary and renamed copies (".part", ".old").
std::vector<std::string> PathsThatChange(const LocalState& record,
                                         const std::vector<const PatchFile*>& files);

}  // namespace patcher
