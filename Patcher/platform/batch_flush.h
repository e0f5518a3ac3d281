#pragma once

#include <filesystem>
#include <span>

namespace platform {

// Many files are brought to the disk in two steps, because the fast way differs: Windows flushes file by
// file, best on many threads at once; Linux flushes a whole file system in one call for about the price of a
// single file.

/// First step, once for each file that has its final content and name; best on the thread that wrote it.
/// Windows does all the work here (a read-only file is writable for that moment), Linux none. Any thread.
/// Returns 0, or the system's error number: the file may then be lost at a power cut.
[[nodiscard]] int StartFlush(const std::filesystem::path& file);

/// Second step, once for many files whose first step succeeded. After it has returned 0, their content and
/// their directory entries survive a power cut. Returns the system's error number otherwise. Any thread.
[[nodiscard]] int FinishFlush(std::span<const std::filesystem::path> files);

}  // namespace platform
