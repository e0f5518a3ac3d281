#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "report.h"
#include "update/patch_manifest.h"

namespace patcher::publisher {

/// Files, and their bytes.
struct Amount {
  std::size_t files = 0;
  std::uint64_t bytes = 0;

  void Add(std::uint64_t size) {
    ++files;
    bytes += size;
  }
};

/// How the files of a version differ from those of the one before.
struct VersionChanges {
  struct File {
    const PatchFile* file;
    bool isNew;
  };

  Amount added;
  Amount changed;  ///< bytes of the new contents
  Amount removed;
  std::vector<File> files;  ///< added or changed, in the order of the manifest
};

/// `before` may be null: then everything is new. The result points into `after`.
VersionChanges CompareVersions(const PatchManifest* before, const PatchManifest& after);

/// The files of the most bytes, at most `count`, the largest first.
std::vector<VersionChanges::File> LargestChanges(const VersionChanges& changes, std::size_t count);

/// {"added": {"files": 1, "bytes": 2}, "changed": ..., "removed": ...}
MiniJson::Value JsonChanges(const VersionChanges& changes);

}  // namespace patcher::publisher
