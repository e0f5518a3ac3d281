#pragma once

#include <cstddef>
#include <vector>

#include "archive_plan.h"
#include "content_store.h"
#include "progress_line.h"
#include "verified_contents.h"

namespace patcher::publisher {

/// The archives of a new version, all of them in the store.
struct ArchiveSet {
  std::vector<PublishedArchive> archives;
  std::size_t kept = 0;
  std::size_t built = 0;
};

/// Plans the archives, verifies the published ones that stay, and packs the others, on all cores. `previous`
/// may be null. Raises PublishError.
[[nodiscard]] ArchiveSet MakeArchives(const PatchManifest& manifest, const Publication* previous,
                                      const ContentStore& store, VerifiedContents& verified,
                                      const ArchiveLimits& limits, Progress& progress);

}  // namespace patcher::publisher
