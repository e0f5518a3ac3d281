#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "manifest_document.h"

namespace patcher::publisher {

/// The limits of one archive, in bytes of content.
struct ArchiveLimits {
  std::uint64_t content = 64u << 20;        ///< a larger file gets its own archive
  std::uint64_t largestFile = 2047u << 20;  ///< a larger file is not put into an archive
};

/// An archive of the next version.
struct PlannedArchive {
  std::int32_t since = 0;
  const PatchBundle* kept = nullptr;    ///< a published archive that stays; null: a new archive
  std::vector<const PatchFile*> files;  ///< the files of a new archive, sorted by path
};

/// Returns whether a published archive is in the store as the manifest describes it.
using IsStored = std::function<bool(const PatchBundle& archive)>;

/// Decides which archives a new version has. A published archive stays if all its files are unchanged. If one
/// of its files changed, or if the archive is not stored, its other files are packed again in their old
/// group, because the launcher extracts every wanted name from an archive. New and changed files form the
/// group of `manifest.version`. A file that was published outside archives stays outside until it changes.
/// The result points into the arguments.
[[nodiscard]] std::vector<PlannedArchive> PlanArchives(const PatchManifest& manifest,
                                                       const Publication* previous, const IsStored& isStored,
                                                       const ArchiveLimits& limits);

}  // namespace patcher::publisher
