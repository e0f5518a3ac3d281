#pragma once

#include <filesystem>
#include <string_view>

namespace patcher {

/// Replaces or creates a file in one step: the text is written to `file` followed by ".part", flushed, and
/// moved over `file`, and the directory is flushed. A death or a power cut leaves the old content or the new
/// one, and perhaps the
/// ".part", which the next call replaces. Returns 0 or the system's error number; the old content is
/// untouched then. No two calls for one file at the same time. Any thread.
[[nodiscard]] int ReplaceWholeFile(const std::filesystem::path& file, std::string_view text);

/// Removes a regular file or a link, also a read-only one, and brings the removal to the disk. True if
/// nothing is left that could be opened as a file.
[[nodiscard]] bool RemoveFile(const std::filesystem::path& file);

}  // namespace patcher
