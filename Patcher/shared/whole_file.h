#pragma once

#include <filesystem>
#include <string_view>

namespace patcher {

/// Replaces or creates a file atomically: writes the text to `file` followed by ".part", flushes it, moves it
/// over `file` and flushes the directory. A crash or a power cut leaves either the old or the new content,
/// and perhaps the ".part" file, which the next call replaces. Returns 0, or the system's error number; the
/// old content is unchanged then. Calls for the same file must not run at the same time. Any thread.
[[nodiscard]] int ReplaceWholeFile(const std::filesystem::path& file, std::string_view text);

/// Removes a regular file or a link, even if it is read-only, and flushes the directory. Returns true if no
/// entry remains that could be opened as a file.
[[nodiscard]] bool RemoveFile(const std::filesystem::path& file);

}  // namespace patcher
