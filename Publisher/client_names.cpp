#include "client_names.h"

#include <algorithm>
#include <array>
#include <unordered_map>

#include "case_fold.h"
#include "platform/hex_digits.h"
#include "shared/own_files.h"
#include "update/manifest_paths.h"

namespace patcher::publisher {
namespace {

/// The launcher reads entry names into a buffer of 1,024 bytes.
constexpr std::size_t kMaxEntryName = 1023;
/// Windows allows 260 characters for a full path, which begins with the install directory.
constexpr std::size_t kLongPath = 200;
constexpr std::size_t kMaxComponentUnits = 255;

constexpr std::array<std::string_view, 6> kDeviceNames{"con", "prn", "aux", "nul", "conin$", "conout$"};

bool IsDeviceName(std::string_view component) {
  std::string name = FoldCase(component.substr(0, component.find('.')));
  while (name.ends_with(' ')) name.pop_back();
  if (HoldsName(kDeviceNames, name)) return true;
  if (!name.starts_with("com") && !name.starts_with("lpt")) return false;
  const std::string_view digit = std::string_view(name).substr(3);
  const bool superscript = digit == "\u00b9" || digit == "\u00b2" || digit == "\u00b3";
  return superscript || (digit.size() == 1 && digit[0] >= '0' && digit[0] <= '9');
}

std::string ComponentProblem(std::string_view component) {
  if (component.empty()) return "has an empty component";
  for (const char byte : component) {
    if (static_cast<unsigned char>(byte) < 32) return "contains a control character";
    if (std::string_view("<>:\"|?*\\").find(byte) != std::string_view::npos) {
      return std::string("contains the character ") + byte + ", which Windows does not allow";
    }
  }
  if (component.back() == '.' || component.back() == ' ') {
    return "has a component that ends in a dot or a blank, which Windows would drop";
  }
  if (IsDeviceName(component)) return "has a component that is a device's name on Windows";
  if (component.size() > kMaxComponentUnits) return "has a component of more than 255 bytes";
  return {};
}

/// Calls `visit` with each parent directory of the path: "a" and "a/b" for "a/b/c".
template <typename Visitor>
void ForEachDirectory(std::string_view path, Visitor visit) {
  for (std::size_t at = path.find('/'); at != std::string_view::npos; at = path.find('/', at + 1)) {
    visit(path.substr(0, at));
  }
}

}  // namespace

std::string NameProblem(std::string_view path) {
  if (path.empty()) return "is empty";
  if (!IsUtf8(path)) return "is not UTF-8";
  std::string_view rest = path;
  for (bool more = true; more;) {
    const std::size_t end = rest.find('/');
    std::string problem = ComponentProblem(rest.substr(0, end));
    if (!problem.empty()) return problem;
    more = end != std::string_view::npos;
    if (more) rest.remove_prefix(end + 1);
  }
  return StaysInside(path) ? std::string() : "would leave the install directory";
}

bool BelongsToInstallation(std::string_view path, bool isDirectory) {
  const bool topLevel = path.find('/') == std::string_view::npos;
  const bool isReserved = HoldsName(kLauncherWorkFiles, path) || HoldsName(kLauncherPrograms, path) ||
                          HoldsName(kOtherFiles, path) || HoldsName(kPlayerFiles, path) ||
                          HoldsName(kPlayerDirectories, path);
  if (topLevel && isReserved) return true;
  if (isDirectory) return false;
  const std::string name = FoldCase(path);
  return name.ends_with(".part") || (topLevel && (name.ends_with(".old") || name.starts_with("_bundle")));
}

bool IsLongForWindows(std::string_view path) { return path.size() > kLongPath; }

bool IsAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 128; });
}

bool IsDigest(std::string_view text) {
  return text.size() == 64 && text.find_first_not_of(platform::kLowerHexDigits) == std::string_view::npos;
}

bool MayBeInArchive(std::string_view path) {
  return path.size() <= kMaxEntryName && path.find("..") == std::string_view::npos;
}

std::vector<std::string> PathClashes(const std::vector<std::string_view>& paths) {
  std::vector<std::string> clashes;
  std::unordered_map<std::string, std::string_view> files;
  std::unordered_map<std::string, std::string_view> directories;
  for (const std::string_view path : paths) {
    const std::string folded = FoldCase(path);
    const auto [other, added] = files.emplace(folded, path);
    if (!added) {
      clashes.push_back(std::string(path) +
                        (other->second == path ? " is listed twice"
                                               : " differs only in case from " + std::string(other->second)));
    }
    ForEachDirectory(folded, [&](std::string_view directory) { directories.emplace(directory, path); });
  }
  for (const std::string_view path : paths) {
    if (const auto renamedFile = files.find(FoldCase(path) + ".old"); renamedFile != files.end()) {
      clashes.push_back(std::string(renamedFile->second) + " is the name to which the launcher moves " +
                        std::string(path) + " when that is in use");
    }
    const auto directory = directories.find(FoldCase(path));
    if (directory == directories.end()) continue;
    clashes.push_back(std::string(path) + " is a file and, but for case, a directory of " +
                      std::string(directory->second));
  }
  return clashes;
}

}  // namespace patcher::publisher
