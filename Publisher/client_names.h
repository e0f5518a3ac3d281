#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace patcher::publisher {

/// Why a path must not be published, as the end of a sentence; empty if it may. Refuses paths that the
/// launcher refuses, that are not UTF-8, or that Windows cannot store.
[[nodiscard]] std::string NameProblem(std::string_view path);

/// Whether the entry belongs to the launcher or the player, so that it is never published: configuration,
/// record, log, settings, work files that every start of the launcher deletes. `path` may name a directory.
[[nodiscard]] bool BelongsToInstallation(std::string_view path, bool isDirectory);

/// Whether the path may be too long for Windows together with a player's install directory.
[[nodiscard]] bool IsLongForWindows(std::string_view path);

/// Whether all bytes are below 128. On Windows other names depend on the player's code page.
[[nodiscard]] bool IsAscii(std::string_view text);

/// Whether the text is a digest as in manifests: 64 lower-case hexadecimal digits.
[[nodiscard]] bool IsDigest(std::string_view text);

/// Whether the launcher extracts an archive's entry of this name.
[[nodiscard]] bool MayBeInArchive(std::string_view path);

/// A sentence for each pair of paths that a case-insensitive file system cannot store together, or that the
/// launcher refuses together: a path, and the same path with ".old".
[[nodiscard]] std::vector<std::string> PathClashes(const std::vector<std::string_view>& paths);

}  // namespace patcher::publisher
