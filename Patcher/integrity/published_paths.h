#pragma once

#include <set>
#include <string>
#include <string_view>

#include "update/patch_manifest.h"

namespace patcher {

/// The files of a manifest, for comparison with the files on disk. Two paths are equal if the system takes
/// them for the same file, or if they differ only in the kind of separator or in the case of ASCII letters.
/// The same function converts both sides, so every file that the launcher has installed is found.
class PublishedPaths {
 public:
  explicit PublishedPaths(const PatchManifest& manifest);

  /// `path` comes from a manifest, or is the bytes of a path from a directory walk.
  bool Contains(std::string_view path) const;
  /// Whether the item itself or a file in it is published.
  bool ContainsAtOrBelow(std::string_view path) const;

 private:
  std::set<std::string> paths_;
};

}  // namespace patcher
