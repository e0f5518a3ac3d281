#include "download_table.h"

#include <array>
#include <cstdio>
#include <functional>
#include <set>
#include <string_view>
#include <unordered_map>

#include "progress_line.h"
#include "update/archive_choice.h"
#include "version_changes.h"

namespace patcher::publisher {
namespace {

constexpr std::size_t kMaxOtherVersions = 5;

std::string Line(const DownloadRow& row) {
  const std::string who = row.version == 0 ? "new" : "from version " + std::to_string(row.version);
  std::array<char, 160> line{};
  std::snprintf(line.data(), line.size(), "\n  %-24s %8zu %9zu %16llu  %s%s", who.c_str(), row.cost.files,
                row.cost.archives, static_cast<unsigned long long>(row.cost.bytes),
                row.cost.isEstimate ? "about " : "", ReadableBytes(row.cost.bytes).c_str());
  return line.data();
}

}  // namespace

DownloadCost CostOfUpdate(const Publication& current, const PatchManifest* installed) {
  std::set<std::string, std::less<>> wanted;
  std::unordered_map<std::string_view, std::uint64_t> singles;
  std::uint64_t wantedBytes = 0;
  for (const auto& [file, isNew] : CompareVersions(installed, current.manifest).files) {
    wanted.insert(file->path);
    singles.emplace(file->path, file->size);
    wantedBytes += file->size;
  }
  std::vector<const PatchBundle*> archives;
  for (const PublishedArchive& archive : current.archives) archives.push_back(&archive.bundle);
  const ArchiveChoice choice = ChooseArchives(archives, wanted, wantedBytes);

  DownloadCost cost{wanted.size(), 0, wantedBytes, false};
  for (const PatchBundle* archive : choice.archives) cost.isEstimate |= archive->sha256.empty();
  if (!choice.isCheaper) return cost;
  cost.archives = choice.archives.size();
  for (const PatchBundle* archive : choice.archives) {
    for (const std::string& path : archive->files) singles.erase(path);
  }
  cost.bytes = choice.bytes;
  for (const auto& [path, size] : singles) cost.bytes += size;
  return cost;
}

std::vector<DownloadRow> DownloadRows(const ContentStore& store, const History& history,
                                      const Publication& current) {
  std::vector<DownloadRow> rows{{0, CostOfUpdate(current, nullptr)}};
  std::size_t otherVersions = 0;
  for (const PublishedVersion& version : history) {
    if (version.version == current.manifest.version || version.held) continue;
    if (++otherVersions > kMaxOtherVersions) break;
    if (!version.problem.empty()) continue;
    const Publication other = ReadCopy(store, version.version);
    rows.push_back({version.version, CostOfUpdate(current, &other.manifest)});
  }
  return rows;
}

std::string DownloadTable(const std::vector<DownloadRow>& rows) {
  std::string table = "  player                      files  archives   bytes to fetch";
  for (const DownloadRow& row : rows) table += Line(row);
  return table;
}

MiniJson::Value JsonDownloads(const std::vector<DownloadRow>& rows) {
  using MiniJson::Value;
  Value list = Value::MakeArray();
  for (const DownloadRow& row : rows) {
    Value value = Value::MakeObject();
    value.Set("version", JsonNumber(static_cast<std::uint64_t>(row.version)));
    value.Set("files", JsonNumber(row.cost.files));
    value.Set("archives", JsonNumber(row.cost.archives));
    value.Set("bytes", JsonNumber(row.cost.bytes));
    value.Set("estimate", Value::MakeBool(row.cost.isEstimate));
    list.arrayItems.push_back(std::move(value));
  }
  return list;
}

}  // namespace patcher::publisher
