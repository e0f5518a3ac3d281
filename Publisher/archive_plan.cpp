#include "archive_plan.h"

#include <algorithm>
#include <map>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "client_names.h"

namespace patcher::publisher {
namespace {

/// Below the number of entries that requires the 64-bit form of ZIP.
constexpr std::size_t kMaxEntries = 60000;

using FilesByPath = std::unordered_map<std::string_view, const PatchFile*>;

FilesByPath ByPath(const PatchManifest& manifest) {
  FilesByPath files;
  files.reserve(manifest.files.size());
  for (const PatchFile& file : manifest.files) files.emplace(file.path, &file);
  return files;
}

class Planner {
 public:
  Planner(const PatchManifest& manifest, const IsStored& isStored, const ArchiveLimits& limits)
      : manifest_(manifest), isStored_(isStored), limits_(limits), files_(ByPath(manifest)) {}

  void TakePrevious(const Publication& previous) {
    before_ = ByPath(previous.manifest);
    for (const PublishedArchive& archive : previous.archives) TakeArchive(archive);
  }

  void TakeChanged() {
    for (const PatchFile& file : manifest_.files) {
      if (!IsUnchanged(file) && MayBePacked(file)) loose_[manifest_.version].push_back(&file);
    }
  }

  std::vector<PlannedArchive> Finish() {
    for (auto& [since, files] : loose_) Pack(since, files);
    std::stable_sort(plan_.begin(), plan_.end(), [](const PlannedArchive& a, const PlannedArchive& b) {
      return a.since != b.since ? a.since < b.since : FirstPath(a) < FirstPath(b);
    });
    return std::move(plan_);
  }

 private:
  bool IsUnchanged(const PatchFile& file) const {
    const auto before = before_.find(file.path);
    return before != before_.end() && before->second->sha256 == file.sha256;
  }

  bool MayBePacked(const PatchFile& file) const {
    return file.size <= limits_.largestFile && MayBeInArchive(file.path);
  }

  void TakeArchive(const PublishedArchive& archive) {
    std::vector<const PatchFile*> unchangedFiles;
    for (const std::string& path : archive.bundle.files) {
      const auto file = files_.find(path);
      if (file == files_.end() || !IsUnchanged(*file->second) || !MayBePacked(*file->second)) continue;
      if (taken_.insert(file->first).second) unchangedFiles.push_back(file->second);
    }
    const bool isUnchanged = !unchangedFiles.empty() && unchangedFiles.size() == archive.bundle.files.size();
    if (isUnchanged && isStored_(archive.bundle)) {
      plan_.push_back({archive.since, &archive.bundle, {}});
    } else {
      auto& loose = loose_[archive.since];
      loose.insert(loose.end(), unchangedFiles.begin(), unchangedFiles.end());
    }
  }

  void Pack(std::int32_t since, std::vector<const PatchFile*>& files) {
    std::sort(files.begin(), files.end(),
              [](const PatchFile* a, const PatchFile* b) { return a->path < b->path; });
    PlannedArchive archive{since, nullptr, {}};
    std::uint64_t content = 0;
    for (const PatchFile* file : files) {
      if (file->size > limits_.content) {
        plan_.push_back({since, nullptr, {file}});
        continue;
      }
      if (content + file->size > limits_.content || archive.files.size() == kMaxEntries) {
        plan_.push_back(std::move(archive));
        archive = {since, nullptr, {}};
        content = 0;
      }
      archive.files.push_back(file);
      content += file->size;
    }
    if (!archive.files.empty()) plan_.push_back(std::move(archive));
  }

  static std::string_view FirstPath(const PlannedArchive& archive) {
    return archive.kept != nullptr ? archive.kept->files.front() : archive.files.front()->path;
  }

  const PatchManifest& manifest_;
  const IsStored& isStored_;
  const ArchiveLimits& limits_;
  const FilesByPath files_;
  FilesByPath before_;
  std::unordered_set<std::string_view> taken_;
  std::map<std::int32_t, std::vector<const PatchFile*>> loose_;
  std::vector<PlannedArchive> plan_;
};

}  // namespace

std::vector<PlannedArchive> PlanArchives(const PatchManifest& manifest, const Publication* previous,
                                         const IsStored& isStored, const ArchiveLimits& limits) {
  Planner planner(manifest, isStored, limits);
  if (previous != nullptr) planner.TakePrevious(*previous);
  planner.TakeChanged();
  return planner.Finish();
}

}  // namespace patcher::publisher
