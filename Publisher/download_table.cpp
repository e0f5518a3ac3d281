#include "download_table.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "progress_line.h"

namespace patcher::publisher {
namespace {

constexpr std::size_t kMaxEarlierVersions = 5;

using Wanted = std::unordered_map<std::string_view, std::uint64_t>;

Wanted WantedFiles(const PatchManifest& current, const PatchManifest* installed) {
  std::unordered_map<std::string_view, std::string_view> have;
  if (installed != nullptr) {
    for (const PatchFile& file : installed->files) have.emplace(file.path, file.sha256);
  }
  Wanted wanted;
  for (const PatchFile& file : current.files) {
    const auto found = have.find(file.path);
    if (found == have.end() || found->second != file.sha256) wanted.emplace(file.path, file.size);
  }
  return wanted;
}

std::string Row(const std::string& who, const DownloadCost& cost) {
  std::array<char, 160> line{};
  std::snprintf(line.data(), line.size(), "  %-24s %8zu %9zu %16llu  %s\n", who.c_str(), cost.files,
                cost.archives, static_cast<unsigned long long>(cost.bytes),
                ReadableBytes(cost.bytes).c_str());
  return line.data();
}

}  // namespace

DownloadCost CostOfUpdate(const Publication& current, const PatchManifest* installed) {
  const Wanted wanted = WantedFiles(current.manifest, installed);
  DownloadCost cost;
  cost.files = wanted.size();
  for (const auto& [path, size] : wanted) cost.fileBytes += size;
  cost.bytes = cost.fileBytes;

  std::uint64_t archiveBytes = 0;
  std::uint64_t singleBytes = cost.fileBytes;
  std::size_t archives = 0;
  for (const PublishedArchive& archive : current.archives) {
    bool chosen = false;
    for (const std::string& path : archive.bundle.files) {
      const auto file = wanted.find(path);
      if (file == wanted.end()) continue;
      chosen = true;
      singleBytes -= file->second;
    }
    if (!chosen) continue;
    ++archives;
    archiveBytes += archive.bundle.size;
  }
  // The launcher weighs the archives against all wanted files, those in no archive included.
  if (archives > 0 && archiveBytes < cost.fileBytes) {
    cost.archives = archives;
    cost.bytes = archiveBytes + singleBytes;
  }
  return cost;
}

std::string DownloadTable(const ContentStore& store, const History& history, const Publication& current) {
  std::string table = "  player                      files  archives   bytes to fetch\n";
  table += Row("new", CostOfUpdate(current, nullptr));
  std::size_t behind = 0;
  for (const PublishedVersion& version : history) {
    if (version.version >= current.manifest.version || version.held || behind == kMaxEarlierVersions)
      continue;
    ++behind;
    const std::string who =
        std::to_string(behind) + " behind (version " + std::to_string(version.version) + ")";
    if (!version.problem.empty()) continue;
    const Publication earlier = ReadCopy(store, version.version);
    table += Row(who, CostOfUpdate(current, &earlier.manifest));
  }
  return table;
}

}  // namespace patcher::publisher
