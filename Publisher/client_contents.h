#pragma once

#include <vector>

#include "client_scan.h"
#include "content_names.h"
#include "content_store.h"
#include "progress_line.h"
#include "update/patch_manifest.h"
#include "verified_contents.h"

namespace patcher::publisher {

// Both functions return the files of a client directory as entries of a manifest, hashed on all cores, in the
// order of the scan. They raise PublishError if a file cannot be read or its size differs from that in the
// scan.

/// Stores each content that the store lacks, and replaces damaged contents.
[[nodiscard]] std::vector<PatchFile> StoreContents(const ClientScan& scan, const ContentStore& store,
                                                   ContentNames& names, VerifiedContents& verified,
                                                   Progress& progress);

/// Only reads and hashes the files.
[[nodiscard]] std::vector<PatchFile> HashContents(const ClientScan& scan, ContentNames& names,
                                                  Progress& progress);

}  // namespace patcher::publisher
