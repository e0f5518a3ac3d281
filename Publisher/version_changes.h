#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "report.h"
#include "update/patch_manifest.h"

namespace patcher::publisher {

/// A number of files and their total bytes.
struct Amount {
  std::size_t files = 0;
  std::uint64_t bytes = 0;

  void Add(std::uint64_t size) {
    ++files;
    bytes += size;
  }
};

/// The differences between the files of two versions.
struct VersionChanges {
  struct File {
    const PatchFile* file;
    bool isNew;
  };

  Amount added;
  Amount changed;  ///< bytes of the new contents
  Amount removed;
  std::vector<File> files;  ///< added or changed files, in the order of the manifest
};

/// `before` may be null: then everything is new. The result points into `after`.
[[nodiscard]] VersionChanges CompareVersions(const PatchManifest* before, const PatchManifest& after);

/// The largest added or changed files, at most `count`, the largest first.
[[nodiscard]] std::vector<VersionChanges::File> LargestChanges(const VersionChanges& changes,
                                                               std::size_t count);

/// {"added": {"files": 1, "bytes": 2}, "changed": ..., "removed": ...}
[[nodiscard]] MiniJson::Value JsonChanges(const VersionChanges& changes);

}  // namespace patcher::publisher
