#include "client_notices.h"

#include <algorithm>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "client_names.h"
#include "publish_error.h"

namespace patcher::publisher {
namespace {

constexpr std::size_t kMaxListed = 20;

/// The lines, each after a line feed. Of a long list only the first lines and the number of the others.
std::string Listed(const std::vector<std::string>& lines) {
  std::string text;
  for (std::size_t i = 0; i < lines.size() && i < kMaxListed; ++i) text += "\n  " + lines[i];
  if (lines.size() > kMaxListed) text += "\n  and " + std::to_string(lines.size() - kMaxListed) + " more";
  return text;
}

template <typename Test>
std::vector<std::string> PathsWhere(const ClientScan& scan, Test test) {
  std::vector<std::string> paths;
  for (const ClientFile& file : scan.files) {
    if (test(file.path)) paths.push_back(file.path);
  }
  return paths;
}

void PrintNotice(const std::string& text, const std::vector<std::string>& paths, Progress& progress) {
  if (!paths.empty()) progress.Notice(text + Listed(paths));
}

}  // namespace

void PrintNotices(const ClientScan& scan, const Exclusions& exclusions, Progress& progress) {
  std::map<std::string, std::vector<std::string>> skipped;
  for (const SkippedEntry& entry : scan.skipped) skipped[entry.reason].push_back(entry.path);
  for (const auto& [reason, paths] : skipped) PrintNotice("not published (" + reason + "):", paths, progress);
  for (const std::string& name : exclusions.Unused()) progress.Notice(name + " matches nothing");
  if (!scan.refused.empty()) throw PublishError("these names cannot be published:" + Listed(scan.refused));
  if (scan.files.empty()) throw PublishError("there is no file to publish in the client directory");
  PrintNotice("these paths have more than 200 bytes, and may be too long on Windows:",
              PathsWhere(scan, IsLongForWindows), progress);
  PrintNotice("these names are not ASCII: on Windows they depend on the player's code page:",
              PathsWhere(scan, [](std::string_view path) { return !IsAscii(path); }), progress);
  if (PathsWhere(scan, [](std::string_view path) { return path == "Tolmira.exe"; }).empty()) {
    progress.Notice("there is no Tolmira.exe: players could not start this game");
  }
}

}  // namespace patcher::publisher
