#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "file_hasher.h"
#include "update/patch_manifest.h"

namespace patcher::publisher {

/// Unpacks an archive in memory and compares it with the files that it should contain. Returns a sentence for
/// each difference: the archive cannot be read, or an entry is missing, unexpected, repeated, damaged, or has
/// other content. Counts the unpacked bytes.
[[nodiscard]] std::vector<std::string> ArchiveFindings(const std::filesystem::path& archive,
                                                       const std::vector<const PatchFile*>& expected,
                                                       FileHasher& hasher);

}  // namespace patcher::publisher
