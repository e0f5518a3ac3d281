#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "content_store.h"
#include "file_hasher.h"
#include "update/patch_manifest.h"

namespace patcher::publisher {

/// Packs stored contents into a ZIP archive under their paths, in the given order, proves the result, and
/// puts it into the store. The same files give the same archive, byte for byte. `since` is the version that
/// brought the contents. `workKey` is unique among the archives in work. Raises PublishError. Any thread.
PatchBundle WriteArchive(const ContentStore& store, const std::vector<const PatchFile*>& files,
                         std::int32_t since, std::string_view workKey, FileHasher& hasher);

}  // namespace patcher::publisher
