#include "archive_set.h"

#include <mutex>
#include <string>
#include <unordered_set>

#include "all_cores.h"
#include "archive_writer.h"

namespace patcher::publisher {
namespace {

/// Names of the planned archives that are published already and are not what they should be.
std::unordered_set<std::string> DamagedAmong(const std::vector<PlannedArchive>& plan, ContentProof& proof,
                                             Progress& progress) {
  std::vector<const PatchBundle*> kept;
  std::uint64_t bytes = 0;
  for (const PlannedArchive& archive : plan) {
    if (archive.kept == nullptr) continue;
    kept.push_back(archive.kept);
    bytes += archive.kept->size;
  }
  std::unordered_set<std::string> damaged;
  std::mutex lock;
  progress.Begin("proving archives", kept.size(), bytes);
  RunOnAllCores(kept.size(), progress, [&](std::size_t index, FileHasher& hasher) {
    const PatchBundle& archive = *kept[index];
    if (!proof.IsSound(archive.name, archive.size, archive.sha256, hasher)) {
      std::lock_guard guard(lock);
      damaged.insert(archive.name);
    }
    hasher.Count(archive.size);
    progress.ItemDone();
  });
  progress.End();
  return damaged;
}

std::vector<PlannedArchive> PlanSoundArchives(const PatchManifest& manifest, const Publication* previous,
                                              const ContentStore& store, ContentProof& proof,
                                              const ArchiveLimits& limits, Progress& progress) {
  const auto isStored = [&store](const PatchBundle& archive) {
    return store.Has(archive.name, archive.size);
  };
  std::vector<PlannedArchive> plan = PlanArchives(manifest, previous, isStored, limits);
  const std::unordered_set<std::string> damaged = DamagedAmong(plan, proof, progress);
  if (damaged.empty()) return plan;
  for (const std::string& name : damaged) progress.Notice(name + " was damaged and is packed again");
  const auto isSound = [&](const PatchBundle& archive) {
    return isStored(archive) && damaged.count(archive.name) == 0;
  };
  return PlanArchives(manifest, previous, isSound, limits);
}

}  // namespace

ArchiveSet MakeArchives(const PatchManifest& manifest, const Publication* previous, const ContentStore& store,
                        ContentProof& proof, const ArchiveLimits& limits, Progress& progress) {
  const auto plan = PlanSoundArchives(manifest, previous, store, proof, limits, progress);
  ArchiveSet set;
  std::vector<std::size_t> toBuild;
  std::uint64_t bytes = 0;
  for (const PlannedArchive& planned : plan) {
    set.archives.push_back({planned.kept != nullptr ? *planned.kept : PatchBundle{}, planned.since});
    if (planned.kept != nullptr) continue;
    toBuild.push_back(set.archives.size() - 1);
    for (const PatchFile* file : planned.files) bytes += file->size;
  }
  progress.Begin("packing", toBuild.size(), bytes);
  RunOnAllCores(toBuild.size(), progress, [&](std::size_t index, FileHasher& hasher) {
    const std::size_t number = toBuild[index];
    const std::string workKey = "archive" + std::to_string(number);
    set.archives[number].bundle =
        WriteArchive(store, plan[number].files, plan[number].since, workKey, hasher);
    progress.ItemDone();
  });
  progress.End();
  set.built = toBuild.size();
  set.kept = plan.size() - toBuild.size();
  return set;
}

}  // namespace patcher::publisher
