#pragma once

#include <filesystem>

namespace patcher {

/// Whether a path below the install directory, relative to it, belongs to the player or to the launcher and
/// must never be cleaned away: anything in a directory of the player's at any depth, settings and accounts,
/// the launcher's own files, downloads in progress. Names count whole and, but for extensions, without the
/// case of ASCII letters.
bool IsProtectedPath(const std::filesystem::path& path);

}  // namespace patcher
