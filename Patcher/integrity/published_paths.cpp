#include "integrity/published_paths.h"

#include <exception>
#include <string_view>

#include "integrity/normal_form.h"
#include "platform/text.h"

namespace patcher {
namespace {

std::string ComparablePath(std::string path) {
  const std::string normal = NormalForm(std::move(path));
  std::string plain;
  plain.reserve(normal.size());
  for (std::string_view rest = normal; !rest.empty();) {
    const std::size_t end = rest.find('/');
    const std::string_view component = rest.substr(0, end);
    if (!component.empty() && component != ".") {
      if (!plain.empty()) plain += '/';
      plain += component;
    }
    rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
  }
  return plain;
}

/// The bytes that a directory walk gives for a file that was installed under this path.
std::string InstalledSpelling(const std::string& path) {
  try {
    return platform::BytesFromPath(platform::PathFromBytes(path));
  } catch (const std::exception&) {
    return path;  // such a file cannot have been installed
  }
}

}  // namespace

PublishedPaths::PublishedPaths(const PatchManifest& manifest) {
  for (const PatchFile& file : manifest.files) {
    // Manifests are mostly sorted: the hint saves the search.
    paths_.insert(paths_.end(), ComparablePath(file.path));
    if (std::string installed = InstalledSpelling(file.path); installed != file.path) {
      paths_.insert(ComparablePath(std::move(installed)));
    }
  }
}

bool PublishedPaths::ContainsAtOrBelow(const std::string& normalForm) const {
  if (Contains(normalForm)) return true;
  const auto below = paths_.lower_bound(normalForm + '/');
  return below != paths_.end() && below->starts_with(normalForm + '/');
}

}  // namespace patcher
