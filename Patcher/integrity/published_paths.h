#pragma once

#include <set>
#include <string>

#include "update/patch_manifest.h"

namespace patcher {

/// The files that a manifest publishes, for comparison with what stands on the disk: in normal form, without
/// empty and "." components, and as the system spells the name if it cannot keep the manifest's bytes. What
/// the launcher has installed is thus always found again.
class PublishedPaths {
 public:
  explicit PublishedPaths(const PatchManifest& manifest);

  /// `normalForm` is that of a path as a directory walk gives it.
  bool Contains(const std::string& normalForm) const { return paths_.count(normalForm) != 0; }
  /// The item itself, or something in it.
  bool ContainsAtOrBelow(const std::string& normalForm) const;

 private:
  std::set<std::string> paths_;
};

}  // namespace patcher
