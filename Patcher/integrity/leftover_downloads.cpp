#include "integrity/leftover_downloads.h"

#include <filesystem>
#include <set>
#include <string>
#include <string_view>
#include <system_error>
#include <unordered_set>
#include <vector>

#include "integrity/below_link.h"
#include "platform/file_names.h"
#include "platform/links.h"
#include "platform/text.h"
#include "shared/own_files.h"
#include "shared/program.h"

namespace patcher {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kSuffix = ".part";

/// The directory of a manifest path; empty for the install directory.
std::string_view DirectoryOf(std::string_view path) {
  constexpr char kSeparators[] = {'/', static_cast<char>(fs::path::preferred_separator)};
  const std::size_t end = path.find_last_of(kSeparators, std::string_view::npos, sizeof kSeparators);
  return path.substr(0, end == std::string_view::npos ? 0 : end);
}

/// Appends the directory's regular files that have the suffix, as paths relative to the install directory.
void ListTemporaryFiles(const fs::path& directory, std::vector<fs::path>& files) {
  if (IsBelowLink(directory / "entry")) return;
  const fs::path suffix = kSuffix;
  std::error_code error;
  fs::directory_iterator entry(ExeDir() / directory, fs::directory_options::skip_permission_denied, error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    if (entry->path().extension() != suffix) continue;
    std::error_code ignored;
    if (entry->symlink_status(ignored).type() == fs::file_type::regular && !platform::IsLink(entry->path())) {
      files.push_back(directory / entry->path().filename());
    }
  }
}

std::vector<fs::path> TemporaryFiles(const PatchManifest& manifest) {
  std::set<std::string_view> directories{std::string_view()};
  for (const PatchFile& file : manifest.files) {
    directories.insert(directories.end(), DirectoryOf(file.path));
  }
  std::vector<fs::path> files;
  for (const std::string_view directory : directories) {
    ListTemporaryFiles(platform::PathFromBytes(directory), files);
  }
  return files;
}

}  // namespace

void RemoveLeftoverDownloads(const PatchManifest& manifest) {
  const std::vector<fs::path> candidates = TemporaryFiles(manifest);
  if (candidates.empty()) return;
  std::unordered_set<std::string> published;
  for (const PatchFile& file : manifest.files) published.insert(platform::FileIdentity(file.path));
  for (const fs::path& candidate : candidates) {
    const std::string path = platform::BytesFromPath(candidate);
    // Only a name that is the same after a conversion to bytes and back can be compared.
    if (platform::PathFromBytes(path).native() != candidate.native()) continue;
    const std::string owner =
        platform::FileIdentity(std::string_view(path).substr(0, path.size() - kSuffix.size()));
    const bool isOurs = owner == platform::FileIdentity(kNewLauncherFile) || published.count(owner) != 0;
    if (!isOurs || published.count(platform::FileIdentity(path)) != 0) continue;
    std::error_code ignored;
    fs::remove(ExeDir() / candidate, ignored);
  }
}

}  // namespace patcher
