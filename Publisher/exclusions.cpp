#include "exclusions.h"

#include <array>
#include <cerrno>
#include <fstream>
#include <system_error>

#include "case_fold.h"
#include "client_names.h"
#include "publish_error.h"
#include "shared/own_files.h"

namespace patcher::publisher {
namespace {

namespace fs = std::filesystem;

/// Files of version control systems and desktops.
constexpr std::array<std::string_view, 10> kStrayNames{
    ".git",      ".gitattributes", ".gitignore",  ".svn",     ".hg",
    ".DS_Store", "Thumbs.db",      "desktop.ini", "__MACOSX", kIgnoreFile};

bool BelongsInNoClient(std::string_view path) {
  const std::string_view name = path.substr(path.rfind('/') + 1);
  return HoldsName(kStrayNames, name) || FoldCase(name).ends_with(".old");
}

std::string Trimmed(const std::string& line) {
  constexpr char kBlanks[] = " \t\r";
  const std::size_t first = line.find_first_not_of(kBlanks);
  if (first == std::string::npos) return {};
  return line.substr(first, line.find_last_not_of(kBlanks) + 1 - first);
}

}  // namespace

Exclusions::Exclusions(const fs::path& client, const std::vector<std::string>& patterns) {
  for (const std::string& pattern : patterns) {
    rules_.push_back({"--exclude " + pattern, NamePattern(pattern)});
  }
  const fs::path file = client / kIgnoreFile;
  std::error_code error;
  if (fs::exists(file, error)) ReadIgnoreFile(file);
  if (error) throw FileError("cannot read", file, error);
}

void Exclusions::ReadIgnoreFile(const fs::path& file) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  errno = 0;
  std::ifstream in(file, std::ios::binary);
  std::string line;
  for (bool first = true; std::getline(in, line); first = false) {
    if (first && line.starts_with(kByteOrderMark)) line.erase(0, kByteOrderMark.size());
    const std::string pattern = Trimmed(line);
    if (pattern.empty() || pattern[0] == '#') continue;
    if (pattern[0] == '!') {
      throw PublishError(std::string(kIgnoreFile) + " has the line " + pattern +
                         ": lines with ! are not supported");
    }
    rules_.push_back({kIgnoreFile + (": " + pattern), NamePattern(pattern)});
    errno = 0;
  }
  if (!in.is_open() || in.bad()) throw FileError("cannot read", file, StreamReason());
}

std::string Exclusions::Reason(std::string_view path, bool isDirectory) {
  if (BelongsToInstallation(path, isDirectory)) return "the name belongs to the launcher or the player";
  if (BelongsInNoClient(path)) return "it belongs in no client";
  for (Rule& rule : rules_) {
    if (!rule.pattern.Matches(path, isDirectory)) continue;
    rule.used = true;
    return rule.name;
  }
  return {};
}

std::vector<std::string> Exclusions::Unused() const {
  std::vector<std::string> names;
  for (const Rule& rule : rules_) {
    if (!rule.used) names.push_back(rule.name);
  }
  return names;
}

}  // namespace patcher::publisher
