#pragma once

#include <filesystem>

namespace patcher {

/// Whether a file is a ZIP archive whose directory can be handed to the ZIP reader: the end records, every
/// entry's name, extra fields and 64-bit sizes lie inside the directory, and every entry's data lies before
/// it and can unpack to the size that the entry states. The reader itself trusts parts of this. Names are not
/// judged. Format: the ZIP appnote, one disk, with or without Zip64.
[[nodiscard]] bool ArchiveDirectoryIsSound(const std::filesystem::path& archive);

}  // namespace patcher
