#include "archive_set.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <system_error>
#include <unordered_set>

#include "all_cores.h"
#include "archive_writer.h"
#include "platform/mutex.h"

namespace patcher::publisher {
namespace {

namespace fs = std::filesystem;

std::uint64_t ContentSize(const PlannedArchive& archive) {
  std::uint64_t bytes = 0;
  for (const PatchFile* file : archive.files) bytes += file->size;
  return bytes;
}

/// The names of the published archives in the plan that are damaged.
std::unordered_set<std::string> DamagedAmong(const std::vector<PlannedArchive>& plan,
                                             VerifiedContents& verified, Progress& progress) {
  std::vector<const PatchBundle*> kept;
  std::vector<std::uint64_t> sizes;
  for (const PlannedArchive& archive : plan) {
    if (archive.kept == nullptr) continue;
    kept.push_back(archive.kept);
    sizes.push_back(archive.kept->size);
  }
  std::unordered_set<std::string> damaged;
  platform::Mutex lock;
  RunOnAllCores("verifying archives", sizes, progress, [&](std::size_t index, FileHasher& hasher) {
    const PatchBundle& archive = *kept[index];
    if (!verified.IsSound(archive.name, archive.size, archive.sha256, hasher)) {
      const platform::MutexLock guard(lock);
      damaged.insert(archive.name);
    }
  });
  return damaged;
}

std::vector<PlannedArchive> PlanSoundArchives(const PatchManifest& manifest, const Publication* previous,
                                              const ContentStore& store, VerifiedContents& verified,
                                              const ArchiveLimits& limits, Progress& progress) {
  const auto isStored = [&store](const PatchBundle& archive) {
    return store.Has(archive.name, archive.size);
  };
  std::vector<PlannedArchive> plan = PlanArchives(manifest, previous, isStored, limits);
  const std::unordered_set<std::string> damaged = DamagedAmong(plan, verified, progress);
  if (damaged.empty()) return plan;
  for (const std::string& name : damaged) progress.Notice(name + " was damaged and is packed again");
  const auto isSound = [&](const PatchBundle& archive) {
    return isStored(archive) && damaged.count(archive.name) == 0;
  };
  return PlanArchives(manifest, previous, isSound, limits);
}

/// An archive that is being written.
struct NewArchive {
  std::size_t number;  ///< in the plan
  fs::path unfinished;
};

/// Writes the new archives to the work folder.
std::vector<NewArchive> PackArchives(const std::vector<PlannedArchive>& plan, const ContentStore& store,
                                     Progress& progress) {
  std::vector<NewArchive> archives;
  std::vector<std::uint64_t> sizes;
  for (std::size_t number = 0; number < plan.size(); ++number) {
    if (plan[number].kept != nullptr) continue;
    archives.push_back({number, store.WorkFile("archive" + std::to_string(number))});
    sizes.push_back(ContentSize(plan[number]));
  }
  RunOnAllCores("packing", sizes, progress, [&](std::size_t index, FileHasher& hasher) {
    WriteArchive(archives[index].unfinished, store, plan[archives[index].number].files, hasher);
  });
  return archives;
}

}  // namespace

ArchiveSet MakeArchives(const PatchManifest& manifest, const Publication* previous, const ContentStore& store,
                        VerifiedContents& verified, const ArchiveLimits& limits, Progress& progress) {
  const auto plan = PlanSoundArchives(manifest, previous, store, verified, limits, progress);
  ArchiveSet set;
  for (const PlannedArchive& planned : plan) {
    set.archives.push_back({planned.kept != nullptr ? *planned.kept : PatchBundle{}, planned.since});
  }
  const std::vector<NewArchive> archives = PackArchives(plan, store, progress);
  std::vector<std::uint64_t> sizes;
  for (const NewArchive& archive : archives) {
    std::error_code error;
    const std::uint64_t packed = fs::file_size(archive.unfinished, error);
    sizes.push_back(ContentSize(plan[archive.number]) + (error ? 0 : packed));
  }
  RunOnAllCores("verifying new archives", sizes, progress, [&](std::size_t index, FileHasher& hasher) {
    const auto& [number, unfinished] = archives[index];
    set.archives[number].bundle =
        StoreArchive(unfinished, store, plan[number].files, plan[number].since, hasher);
  });
  set.built = archives.size();
  set.kept = plan.size() - archives.size();
  return set;
}

}  // namespace patcher::publisher
