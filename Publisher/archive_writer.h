#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

#include "content_store.h"
#include "file_hasher.h"
#include "update/patch_manifest.h"

namespace patcher::publisher {

/// Packs stored contents into a ZIP archive under their paths, in the given order. Counts the bytes of the
/// contents. With the same files the same build writes the same archive, byte for byte. Raises PublishError.
/// Any thread. Needs up to 128 MiB of memory.
void WriteArchive(const std::filesystem::path& archive, const ContentStore& store,
                  const std::vector<const PatchFile*>& files, FileHasher& hasher);

/// Verifies the content of a new archive and puts it into the store. Counts the bytes of the contents and of
/// the archive. `since` is the version in which the contents were new. Raises PublishError. Any thread.
[[nodiscard]] PatchBundle StoreArchive(const std::filesystem::path& archive, const ContentStore& store,
                                       const std::vector<const PatchFile*>& files, std::int32_t since,
                                       FileHasher& hasher);

}  // namespace patcher::publisher
