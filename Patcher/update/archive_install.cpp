#include "update/archive_install.h"

#include <filesystem>
#include <system_error>
#include <vector>

#include "control/protocol/ui_event.h"
#include "shared/program.h"
#include "transport/run_pool.h"
#include "update/archive_extraction.h"
#include "update/verified_download.h"

namespace patcher {
namespace {

namespace fs = std::filesystem;

bool HasExpectedSize(const fs::path& file, std::uint64_t size) {
  std::error_code error;
  return fs::file_size(file, error) == size && !error;
}

void ReportMissing(RunState& run, const std::string& path, const PatchBundle& bundle) {
  PostStatus(run.window,
             "Anomalie: " + path + " absent apres extraction de " + bundle.name + ", sera repris.");
  const platform::MutexLock guard(run.stateLock);
  run.lacksFiles = true;
}

/// The files that the archive has installed. Reports those that are missing.
std::vector<InstalledFile> InstalledFiles(RunState& run, std::size_t index) {
  const PatchBundle& bundle = *run.chosenBundles[index];
  std::vector<InstalledFile> installed;
  for (const std::string& path : bundle.files) {
    const auto owner = run.archivePaths.find(path);
    const auto digest = run.expectedDigests.find(path);
    if (owner == run.archivePaths.end() || owner->second != index || digest == run.expectedDigests.end())
      continue;
    if (HasExpectedSize(InstalledPlace(path), run.expectedSizes.find(path)->second)) {
      installed.push_back({path, std::string(digest->second)});
    } else {
      ReportMissing(run, path, bundle);
    }
  }
  return installed;
}

/// Flushes the files to disk and then enters them in the record.
void Record(RunState& run, const std::vector<InstalledFile>& files) {
  // A failure leaves files out of the record. The next run checks their digests.
  static_cast<void>(RunPool(files.size(), [&](std::size_t index, unsigned) {
    run.unflushed.Add(files[index]);
    return true;
  }));
  EnterInRecord(run, run.unflushed.Flush());
  const platform::MutexLock guard(run.stateLock);
  run.record.SaveProgress();
}

/// Hands the archive's wanted files to the single-file stage.
void GiveUp(RunState& run, const PatchBundle& bundle, const std::string& status) {
  PostStatus(run.window, status + " - ses fichiers seront pris un par un.");
  const platform::MutexLock guard(run.stateLock);
  for (const std::string& path : bundle.files) {
    if (run.wantedPaths.count(path) != 0) run.retryPaths.insert(path);
  }
}

}  // namespace

bool BundleWorker(RunState& run, ProgressTracker& tracker, std::size_t index, unsigned worker) {
  const PatchBundle& bundle = *run.chosenBundles[index];
  tracker.SetCurrentFile(bundle.name);
  const fs::path file = ExeDir() / ("_bundle" + std::to_string(worker) + ".part");
  std::error_code ignored;

  std::string reason;
  if (!DownloadVerified(run.session, "/patch/" + bundle.name, file, {bundle.sha256, bundle.size}, tracker,
                        reason)) {
    fs::remove(file, ignored);
    GiveUp(run, bundle, "Archive indisponible: " + bundle.name + " (" + reason + ")");
    return true;
  }

  std::string failure;
  const bool extracted = ExtractArchive(
      file,
      [&](std::string_view path) {
        const auto owner = run.archivePaths.find(path);
        return owner != run.archivePaths.end() ? owner->second == index : run.wantedPaths.count(path) != 0;
      },
      run.extracting, failure);
  fs::remove(file, ignored);
  if (!extracted) {
    GiveUp(run, bundle, "Archive illisible: " + bundle.name + " (" + failure + ")");
    return true;
  }

  const std::int32_t done = tracker.ItemDone();
  Record(run, InstalledFiles(run, index));
  PostStatus(run.window, "Archive " + std::to_string(done) + "/" + std::to_string(run.chosenBundles.size()) +
                             " : " + bundle.name);
  return true;
}

}  // namespace patcher
