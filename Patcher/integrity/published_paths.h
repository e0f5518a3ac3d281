#pragma once

#include <set>
#include <string>
#include <string_view>

#include "update/patch_manifest.h"

namespace patcher {

/// The files that a manifest publishes, for comparison with what is on the disk: two paths are equal if the
/// system takes them for one file, or if they differ only in the kind of separator or in the case of
/// ASCII letters. Both sides go through the same
/// function, so what the launcher has installed is always found again.
class PublishedPaths {
 public:
  explicit PublishedPaths(const PatchManifest& manifest);

  /// `path` is one of a manifest, or in bytes what a directory walk gives.
  bool Contains(std::string_view path) const;
  /// The item itself, or something in it.
  bool ContainsAtOrBelow(std::string_view path) const;

 private:
  std::set<std::string> paths_;
};

}  // namespace patcher
