#pragma once

#include <vector>

#include "client_scan.h"
#include "content_names.h"
#include "content_proof.h"
#include "content_store.h"
#include "progress_line.h"
#include "update/patch_manifest.h"

namespace patcher::publisher {

// The files of a client directory as entries of a manifest, hashed on all cores, in the order of the scan.
// Raise PublishError if a file cannot be read or does not have the size that the scan saw.

/// Stores each content that the store lacks, and writes those again that do not hold what their names say.
std::vector<PatchFile> StoreContents(const ClientScan& scan, const ContentStore& store, ContentNames& names,
                                     ContentProof& proof, Progress& progress);

/// Reads only.
std::vector<PatchFile> HashContents(const ClientScan& scan, ContentNames& names, Progress& progress);

}  // namespace patcher::publisher
