#include "update/manifest_paths.h"

#include <algorithm>
#include <set>

namespace patcher {
namespace {

constexpr std::string_view kTemporarySuffix = ".part";

bool LeadsUpwards(std::string_view component) {
  return component.find_first_not_of(". ") == std::string_view::npos &&
         std::count(component.begin(), component.end(), '.') >= 2;
}

}  // namespace

bool StaysInside(std::string_view path) {
  // No system of ours can store such a name, and the page could not read it.
  if (std::any_of(path.begin(), path.end(), [](unsigned char byte) { return byte < 32; })) return false;
  if (path.starts_with('/') || path.starts_with('\\')) return false;
  if (path.size() > 1 && path[1] == ':') return false;
  while (!path.empty()) {
    const std::size_t end = path.find_first_of("/\\");
    if (LeadsUpwards(path.substr(0, end))) return false;
    path = end == std::string_view::npos ? std::string_view() : path.substr(end + 1);
  }
  return true;
}

bool PathsAreUsable(const PatchManifest& manifest) {
  std::set<std::string_view> owners;  // of the paths that are temporary names; mostly none
  for (const PatchFile& file : manifest.files) {
    if (!StaysInside(file.path)) return false;
    const std::string_view path = file.path;
    if (path.ends_with(kTemporarySuffix))
      owners.insert(path.substr(0, path.size() - kTemporarySuffix.size()));
  }
  return owners.empty() || std::none_of(manifest.files.begin(), manifest.files.end(),
                                        [&](const PatchFile& file) { return owners.count(file.path) != 0; });
}

}  // namespace patcher
