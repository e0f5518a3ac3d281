#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "file_hasher.h"
#include "update/patch_manifest.h"

namespace patcher::publisher {

/// Unpacks an archive in memory and compares it with the files that it should hold. Returns a sentence for
/// each difference: no readable archive, an entry that is missing, unexpected, there twice, damaged, or of
/// another content. Counts the bytes of the contents as they are unpacked.
std::vector<std::string> ArchiveFindings(const std::filesystem::path& archive,
                                         const std::vector<const PatchFile*>& expected, FileHasher& hasher);

}  // namespace patcher::publisher
