#include "integrity/published_paths.h"

#include <string_view>

#include "integrity/normal_form.h"
#include "platform/file_names.h"

namespace patcher {
namespace {

std::string ComparablePath(std::string_view path) { return NormalForm(platform::FileIdentity(path)); }

}  // namespace

PublishedPaths::PublishedPaths(const PatchManifest& manifest) {
  for (const PatchFile& file : manifest.files) {
    // Manifests are mostly sorted: the hint saves the search.
    paths_.insert(paths_.end(), ComparablePath(file.path));
  }
}

bool PublishedPaths::Contains(std::string_view path) const { return paths_.count(ComparablePath(path)) != 0; }

bool PublishedPaths::ContainsAtOrBelow(std::string_view path) const {
  const std::string own = ComparablePath(path);
  if (paths_.count(own) != 0) return true;
  const auto below = paths_.lower_bound(own + '/');
  return below != paths_.end() && below->starts_with(own + '/');
}

}  // namespace patcher
