#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace patcher::publisher {

/// Why a path must not be published, as the end of a sentence; empty if it may. Refused is what the launcher
/// refuses, what is no UTF-8, and what a Windows file system cannot hold.
std::string NameProblem(std::string_view path);

/// Whether the entry is the launcher's or the player's own and stays with who has it: configuration,
/// record, log, settings, work files that every start of the launcher deletes. `path` may name a directory.
bool BelongsToInstallation(std::string_view path, bool isDirectory);

/// Whether the path may be too long below a player's install directory.
bool IsLongForWindows(std::string_view path);

/// Whether all bytes are below 128. Other names depend on a player's code page on Windows.
bool IsAscii(std::string_view text);

/// Whether the text is a SHA-256 as manifests give it: 64 lower-case hexadecimal digits.
bool IsDigest(std::string_view text);

/// Whether the launcher would extract an archive's entry of this name.
bool MayStandInArchive(std::string_view path);

/// A sentence for each pair of paths that a file system that ignores case cannot hold side by side, or that
/// the launcher refuses together: a path and the same with ".old".
std::vector<std::string> PathClashes(const std::vector<std::string_view>& paths);

}  // namespace patcher::publisher
