#pragma once

#include <filesystem>

namespace patcher {

/// Whether a file is a ZIP archive with a directory that is safe for the ZIP reader, which does not check all
/// of this itself. The end records are valid. Every entry's name, extra fields and 64-bit sizes are inside
/// the directory. Every entry's data is before the directory and can unpack to the size that the entry gives.
/// Does not check what the names are. Format: the ZIP appnote, one disk, with or without Zip64.
[[nodiscard]] bool ArchiveDirectoryIsSound(const std::filesystem::path& archive);

}  // namespace patcher
