#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "manifest_document.h"

namespace patcher::publisher {

/// Limits of what goes into one archive, in bytes of content.
struct ArchiveLimits {
  std::uint64_t content = 64u << 20;        ///< a larger file gets an archive of its own
  std::uint64_t largestFile = 2047u << 20;  ///< a larger file stays out of archives
};

/// An archive that is to be published.
struct PlannedArchive {
  std::int32_t since = 0;
  const PatchBundle* kept = nullptr;    ///< the published archive that stays as it is, or
  std::vector<const PatchFile*> files;  ///< what is to be packed, sorted by path
};

/// Whether a published archive is in the store as the manifest describes it.
using IsStored = std::function<bool(const PatchBundle& archive)>;

/// Decides the archives of a new version. A published archive whose files are all unchanged stays; of one
/// that lost a file or is not stored, the others are packed anew in their old group, since the launcher
/// extracts every wanted name that an archive holds. New and changed files form the group of
/// `manifest.version`. A file that was published outside of archives stays outside until it changes. The
/// pointers refer to the arguments.
std::vector<PlannedArchive> PlanArchives(const PatchManifest& manifest, const Publication* previous,
                                         const IsStored& isStored, const ArchiveLimits& limits);

}  // namespace patcher::publisher
