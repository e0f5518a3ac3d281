#pragma once

#include <filesystem>

namespace patcher {

/// Whether a path belongs to the player or to the launcher, so that the cleanup must never remove it:
/// anything in one of the player's directories at any depth, settings and accounts, the launcher's own files,
/// downloads in progress. The path is relative to the install directory. Compares whole names, without the
/// case of ASCII letters except in extensions.
bool IsProtectedPath(const std::filesystem::path& path);

}  // namespace patcher
