#include "update/manifest_paths.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <unordered_set>
#include <vector>

#include "platform/file_names.h"
#include "shared/ascii.h"
#include "shared/own_files.h"

namespace patcher {
namespace {

/// A download has the name of its file and the first suffix. A file in use is renamed with the second.
constexpr std::string_view kSuffixes[] = {".part", ".old"};

bool EndsWith(std::string_view text, std::string_view lowerCaseSuffix) {
  return text.size() >= lowerCaseSuffix.size() &&
         std::equal(lowerCaseSuffix.rbegin(), lowerCaseSuffix.rend(), text.rbegin(),
                    [](char lower, char c) { return lower == AsciiLower(c); });
}

/// The path without these suffixes and without characters that a system may drop before or after them.
std::string_view WithoutSuffixes(std::string_view path) {
  for (;;) {
    path = path.substr(0, path.find_last_not_of("./\\ ") + 1);
    const auto suffix = std::find_if(std::begin(kSuffixes), std::end(kSuffixes),
                                     [path](std::string_view s) { return EndsWith(path, s); });
    if (suffix == std::end(kSuffixes)) return path;
    path.remove_suffix(suffix->size());
  }
}

/// A hash (FNV-1a) that is equal for all ASCII paths of one file on any system, and for its suffixed names:
/// it ignores case, dots, blanks and the kind of separator. Sets `ascii` to whether the path is ASCII.
std::uint64_t HashOfAscii(std::string_view path, bool& ascii) {
  std::uint64_t hash = 0xcbf29ce484222325;
  unsigned char bits = 0;
  bool afterSeparator = false;
  bool hasText = false;
  const auto add = [&hash](unsigned char byte) { hash = (hash ^ byte) * 0x100000001b3; };
  for (const char c : WithoutSuffixes(path)) {
    const auto byte = static_cast<unsigned char>(c);
    bits |= byte;
    if (c == '/' || c == '\\') {
      afterSeparator = hasText;
    } else if (c != '.' && c != ' ' && byte < 128) {
      if (afterSeparator) add('/');
      add(byte | 0x20);
      afterSeparator = false;
      hasText = true;
    }
  }
  ascii = bits < 128;
  return hash;
}

/// The same for any path. Ignores characters that are not ASCII, since a system may fold their case.
std::uint64_t LooseHash(std::string_view path) {
  bool ascii = true;
  const std::uint64_t hash = HashOfAscii(path, ascii);
  // In a code page one character may have two spellings.
  return ascii ? hash : HashOfAscii(platform::FileIdentity(path), ascii);
}

/// The paths that may mean the same file as another path, a file of the launcher, or a directory of
/// the player. Usually there are none.
/// An exact comparison of all paths would take too long for a start with nothing to do.
std::vector<std::string_view> Suspects(const std::vector<PatchFile>& files) {
  std::vector<std::uint64_t> hashes;
  hashes.reserve(files.size());
  std::vector<bool> buckets(std::bit_ceil(files.size() + 1) * 64);
  std::unordered_set<std::uint64_t> repeatedHashes;
  for (const std::string_view name : kLauncherWorkFiles) repeatedHashes.insert(LooseHash(name));
  for (const std::string_view name : kPlayerDirectories) repeatedHashes.insert(LooseHash(name));
  for (const PatchFile& file : files) {
    hashes.push_back(LooseHash(file.path));
    std::vector<bool>::reference bit =
        buckets[static_cast<std::size_t>(hashes.back() & (buckets.size() - 1))];
    if (bit) repeatedHashes.insert(hashes.back());
    bit = true;
  }
  std::vector<std::string_view> suspects;
  for (std::size_t i = 0; i < files.size(); ++i) {
    if (repeatedHashes.count(hashes[i]) != 0) suspects.push_back(files[i].path);
  }
  return suspects;
}

/// The names that the launcher may use for temporary and old copies of this file.
std::vector<std::string> SuffixedNames(std::string_view path) {
  std::vector<std::string> names;
  for (const std::string_view suffix : kSuffixes) {
    names.push_back(platform::FileIdentity(std::string(path).append(suffix)));
  }
  return names;
}

bool HaveConflicts(const std::vector<std::string_view>& paths) {
  std::map<std::string, std::string_view> owners;  // path by identity
  for (const std::string_view path : paths) {
    const auto [owner, added] = owners.emplace(platform::FileIdentity(path), path);
    if (!added && owner->second != path) return true;
  }
  const auto isTaken = [&owners](const std::string& identity) { return owners.count(identity) != 0; };
  const auto suffixedNamesAreTaken = [&isTaken](std::string_view path) {
    const std::vector<std::string> names = SuffixedNames(path);
    return std::any_of(names.begin(), names.end(), isTaken);
  };
  return std::any_of(paths.begin(), paths.end(), suffixedNamesAreTaken) ||
         std::any_of(kPlayerDirectories.begin(), kPlayerDirectories.end(),
                     [&](std::string_view name) { return isTaken(platform::FileIdentity(name)); }) ||
         std::any_of(kLauncherWorkFiles.begin(), kLauncherWorkFiles.end(), [&](std::string_view name) {
           return isTaken(platform::FileIdentity(name)) || suffixedNamesAreTaken(name);
         });
}

}  // namespace

bool StaysInside(std::string_view path) {
  if (path.starts_with('/') || path.starts_with('\\')) return false;
  if (path.size() > 1 && path[1] == ':') return false;
  // These two describe the current component so far.
  int dots = 0;
  bool onlyDotsAndBlanks = true;
  for (const char c : path) {
    // Windows cannot store such a name, and the page could not read it.
    if (static_cast<unsigned char>(c) < 32) return false;
    if (c == '/' || c == '\\') {
      if (onlyDotsAndBlanks && dots >= 2) return false;
      dots = 0;
      onlyDotsAndBlanks = true;
    } else if (c == '.') {
      ++dots;
    } else if (c != ' ') {
      onlyDotsAndBlanks = false;
    }
  }
  return !onlyDotsAndBlanks || dots < 2;
}

bool PathsAreUsable(const PatchManifest& manifest) {
  return std::all_of(manifest.files.begin(), manifest.files.end(),
                     [](const PatchFile& file) {
                       return StaysInside(file.path) && platform::NamesAFile(file.path);
                     }) &&
         !HaveConflicts(Suspects(manifest.files));
}

std::vector<std::string> PathsThatChange(const LocalState& record,
                                         const std::vector<const PatchFile*>& files) {
  std::unordered_set<std::string_view> paths;
  std::unordered_set<std::uint64_t> hashes;
  for (const PatchFile* file : files) {
    paths.insert(file->path);
    hashes.insert(LooseHash(file->path));
  }
  std::vector<std::string> changing;
  std::vector<std::string> suspects;  // usually empty
  for (const auto& [path, digest] : record) {
    if (paths.count(path) != 0) {
      changing.push_back(path);
    } else if (hashes.count(LooseHash(path)) != 0) {
      suspects.push_back(path);
    }
  }
  if (suspects.empty()) return changing;
  std::unordered_set<std::string> identities;
  for (const std::string_view path : paths) {
    identities.insert(platform::FileIdentity(path));
    for (std::string& name : SuffixedNames(path)) identities.insert(std::move(name));
  }
  std::copy_if(suspects.begin(), suspects.end(), std::back_inserter(changing),
               [&](const std::string& path) { return identities.count(platform::FileIdentity(path)) != 0; });
  return changing;
}

}  // namespace patcher
