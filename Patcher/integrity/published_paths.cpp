#include "integrity/published_paths.h"

#include <string_view>

#include "platform/file_names.h"
#include "shared/ascii.h"

namespace patcher {
namespace {

/// Equal for two paths if the system takes them for the same file, or if they differ only in the kind of
/// separator or in the case of ASCII letters.
std::string NormalForm(std::string_view path) {
  std::string form = platform::FileIdentity(path);
  for (char& c : form) c = c == '\\' ? '/' : AsciiLower(c);
  return form;
}

}  // namespace

PublishedPaths::PublishedPaths(const PatchManifest& manifest) {
  for (const PatchFile& file : manifest.files) {
    // Most manifests are sorted, so the hint avoids a search.
    paths_.insert(paths_.end(), NormalForm(file.path));
  }
}

bool PublishedPaths::Contains(std::string_view path) const { return paths_.count(NormalForm(path)) != 0; }

bool PublishedPaths::ContainsAtOrBelow(std::string_view path) const {
  const std::string form = NormalForm(path);
  if (paths_.count(form) != 0) return true;
  const auto next = paths_.lower_bound(form + '/');
  return next != paths_.end() && next->starts_with(form + '/');
}

}  // namespace patcher
