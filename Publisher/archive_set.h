#pragma once

#include <cstddef>
#include <vector>

#include "archive_plan.h"
#include "content_proof.h"
#include "content_store.h"
#include "progress_line.h"

namespace patcher::publisher {

/// The archives of a new version, all of them in the store.
struct ArchiveSet {
  std::vector<PublishedArchive> archives;
  std::size_t kept = 0;
  std::size_t built = 0;
};

/// Plans the archives, proves those that stay, and packs the others anew, on all cores. `previous` may be
/// null. Raises PublishError.
ArchiveSet MakeArchives(const PatchManifest& manifest, const Publication* previous, const ContentStore& store,
                        ContentProof& proof, const ArchiveLimits& limits, Progress& progress);

}  // namespace patcher::publisher
