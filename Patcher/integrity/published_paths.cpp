#include "integrity/published_paths.h"

#include <string_view>

#include "platform/file_names.h"
#include "shared/ascii.h"

namespace patcher {
namespace {

/// The same for two paths that the system takes for one file, or that differ in the kind of separator or in
/// the case of ASCII letters.
std::string NormalForm(std::string_view path) {
  std::string form = platform::FileIdentity(path);
  for (char& c : form) c = c == '\\' ? '/' : AsciiLower(c);
  return form;
}

}  // namespace

PublishedPaths::PublishedPaths(const PatchManifest& manifest) {
  for (const PatchFile& file : manifest.files) {
    // Manifests are mostly sorted: the hint saves the search.
    paths_.insert(paths_.end(), NormalForm(file.path));
  }
}

bool PublishedPaths::Contains(std::string_view path) const { return paths_.count(NormalForm(path)) != 0; }

bool PublishedPaths::ContainsAtOrBelow(std::string_view path) const {
  const std::string own = NormalForm(path);
  if (paths_.count(own) != 0) return true;
  const auto below = paths_.lower_bound(own + '/');
  return below != paths_.end() && below->starts_with(own + '/');
}

}  // namespace patcher
