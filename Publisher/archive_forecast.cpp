#include "archive_forecast.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>

namespace patcher::publisher {
namespace {

/// Bytes of an archive besides the contents: headers, descriptors, each name twice, and the end of the
/// directory.
constexpr std::uint64_t kBytesPerEntry = 92;
constexpr std::uint64_t kBytesAtEnd = 22;

std::uint64_t Frame(const std::vector<std::string>& paths) {
  std::uint64_t bytes = kBytesAtEnd;
  for (const std::string& path : paths) bytes += kBytesPerEntry + 2 * path.size();
  return bytes;
}

std::optional<double> PackedShare(const Publication* previous) {
  if (previous == nullptr) return std::nullopt;
  std::unordered_map<std::string_view, std::uint64_t> sizes;
  for (const PatchFile& file : previous->manifest.files) sizes.emplace(file.path, file.size);
  std::uint64_t content = 0;
  std::uint64_t packed = 0;
  for (const auto& [archive, since] : previous->archives) {
    packed += archive.size - std::min(archive.size, Frame(archive.files));
    for (const std::string& path : archive.files) {
      if (const auto size = sizes.find(path); size != sizes.end()) content += size->second;
    }
  }
  if (content == 0) return std::nullopt;
  return std::min(1.0, static_cast<double>(packed) / static_cast<double>(content));
}

}  // namespace

ArchiveForecast ForecastArchives(const PatchManifest& manifest, const Publication* previous,
                                 const ContentStore& store, const ArchiveLimits& limits) {
  const auto isStored = [&store](const PatchBundle& archive) {
    return store.Has(archive.name, archive.size);
  };
  const std::optional<double> share = PackedShare(previous);
  ArchiveForecast forecast;
  if (share) forecast.percent = *share * 100;
  for (const PlannedArchive& planned : PlanArchives(manifest, previous, isStored, limits)) {
    if (planned.kept != nullptr) {
      forecast.archives.push_back({*planned.kept, planned.since});
      continue;
    }
    PatchBundle archive;
    std::uint64_t content = 0;
    for (const PatchFile* file : planned.files) {
      archive.files.push_back(file->path);
      content += file->size;
    }
    archive.size =
        static_cast<std::uint64_t>(static_cast<double>(content) * share.value_or(1)) + Frame(archive.files);
    ++forecast.toPack;
    forecast.bytesToPack += archive.size;
    forecast.archives.push_back({std::move(archive), planned.since});
  }
  return forecast;
}

}  // namespace patcher::publisher
