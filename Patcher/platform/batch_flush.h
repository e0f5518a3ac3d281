#pragma once

#include <filesystem>
#include <span>
#include <vector>

namespace platform {

// Flushing many files takes two steps, because the fast way differs between the systems: Windows flushes file
// by file, fastest on several threads; Linux flushes a whole file system in one call, which costs about as
// much as flushing one file.

/// First step: call it once for each file that has its final content and name, preferably on the thread that
/// wrote it. Windows does all the work here (a read-only file is made writable during the call), Linux none.
/// Any thread. Returns 0, or the system's error number: the file may then be lost at a power cut.
[[nodiscard]] int StartFlush(const std::filesystem::path& file);

/// Second step: call it once for all files. Returns for each file whether its content and its directory entry
/// survive a power cut, if its first step succeeded. Any thread.
[[nodiscard]] std::vector<bool> FinishFlush(std::span<const std::filesystem::path> files);

}  // namespace platform
