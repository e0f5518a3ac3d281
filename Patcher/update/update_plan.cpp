#include "update/update_plan.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <set>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "control/protocol/ui_event.h"
#include "integrity/digest/sha256.h"
#include "platform/mutex.h"
#include "shared/program.h"
#include "transport/config.h"
#include "transport/run_pool.h"
#include "update/archive_choice.h"
#include "update/manifest_paths.h"

namespace patcher {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kHashedFilesPerStatus = 25;
constexpr std::size_t kFilesPerWorkItem = 512;

/// Hashes files that are not in the record, and reports their number from time to time. Each worker uses its
/// own number.
class HashCheck {
 public:
  HashCheck(HostWindow& window, std::size_t workers) : window_(window), digests_(workers) {}

  bool IsCorrect(const PatchFile& file, unsigned worker) {
    const fs::path place = InstalledPlace(file.path);
    std::error_code error;
    if (!fs::exists(place, error) || error) return false;
    const std::uint64_t size = fs::file_size(place, error);
    if (error || size != file.size) return false;
    Count();
    std::optional<Sha256>& sha256 = digests_[worker];
    if (!sha256) sha256.emplace();
    return sha256->HashFile(place) == file.sha256;
  }

 private:
  void Count() {
    const platform::MutexLock guard(lock_);
    if (hashed_++ % kHashedFilesPerStatus == 0) {
      PostStatus(window_, "Verification des fichiers deja presents (" + std::to_string(hashed_) + ")...");
    }
  }

  HostWindow& window_;
  std::vector<std::optional<Sha256>> digests_;  // one for each worker, made when it is needed
  platform::Mutex lock_;
  std::size_t hashed_ PATCHER_GUARDED_BY(lock_) = 0;
};

bool RecordNames(const LocalState& record, const PatchFile& file) {
  const auto entry = record.find(file.path);
  return entry != record.end() && entry->second == file.sha256;
}

/// True only if each path is listed once.
bool PathsAscend(const std::vector<PatchFile>& files) {
  return std::adjacent_find(files.begin(), files.end(), [](const PatchFile& file, const PatchFile& next) {
           return file.path >= next.path;
         }) == files.end();
}

/// The state of the record; null if it is equal to the manifest. It does not change while the workers read
/// it.
const LocalState* ComparableRecord(RunState& run) {
  const platform::MutexLock guard(run.stateLock);
  return run.record.IsDocument() && PathsAscend(run.manifest.files) ? nullptr : &run.record.State();
}

/// For each file of the manifest, whether the record has its digest and something exists in its place. Uses
/// the pool, since this takes most of the time of a start with nothing to do.
std::vector<char> TrustedFiles(RunState& run) {
  const std::vector<PatchFile>& files = run.manifest.files;
  const LocalState* record = ComparableRecord(run);
  std::vector<char> trusted(files.size());
  const auto examine = [&](std::size_t item, unsigned) {
    const std::size_t begin = item * kFilesPerWorkItem;
    const std::size_t end = std::min(begin + kFilesPerWorkItem, files.size());
    for (std::size_t i = begin; i < end; ++i) {
      std::error_code error;
      const bool isNamed = record == nullptr || RecordNames(*record, files[i]);
      if (isNamed && fs::exists(InstalledPlace(files[i].path), error)) trusted[i] = 1;
    }
    return true;
  };
  // After a failure, the remaining files are not trusted.
  static_cast<void>(RunPool((files.size() + kFilesPerWorkItem - 1) / kFilesPerWorkItem, examine));
  return trusted;
}

void ListExpected(RunState& run) {
  for (const PatchFile& file : run.manifest.files) {
    // Most manifests are sorted by path, so the hint avoids a search.
    run.expectedDigests.insert_or_assign(run.expectedDigests.end(), file.path, file.sha256);
    run.expectedSizes.insert_or_assign(run.expectedSizes.end(), file.path, file.size);
  }
}

/// Nothing if there is no such file, or if the system does not report its time and size.
std::optional<FileStamp> StampOf(const std::string& path) {
  const fs::path place = InstalledPlace(path);
  std::error_code error;
  FileStamp stamp;
  stamp.written = fs::last_write_time(place, error);
  if (!error) stamp.size = fs::file_size(place, error);
  if (error) return std::nullopt;
  return stamp;
}

}  // namespace

std::size_t FindWantedFiles(RunState& run) {
  const std::vector<PatchFile>& files = run.manifest.files;
  const std::vector<char> trusted = TrustedFiles(run);
  std::vector<std::size_t> untrusted;
  for (std::size_t i = 0; i < files.size(); ++i) {
    if (trusted[i] == 0) untrusted.push_back(i);
  }
  HashCheck check(run.window, static_cast<std::size_t>(std::max(PatchConfig::Current().connections, 1)));
  std::vector<char> correct(untrusted.size());
  // A crashed run may have left these files unflushed.
  UnflushedFiles unflushed;
  const bool complete = RunPool(untrusted.size(), [&](std::size_t item, unsigned worker) {
    const PatchFile& file = files[untrusted[item]];
    if (!check.IsCorrect(file, worker)) return true;
    correct[item] = 1;
    unflushed.Add({file.path, file.sha256});
    return true;
  });
  if (!complete) throw std::runtime_error("not all files could be hashed");

  std::set<std::string_view> correctPaths;
  for (std::size_t item = 0; item < untrusted.size(); ++item) {
    const PatchFile& file = files[untrusted[item]];
    if (correct[item] != 0) {
      correctPaths.insert(file.path);
    } else {
      run.wanted.push_back(&file);
      run.wantedBytes += file.size;
    }
  }
  EnterInRecord(run, unflushed.Flush());
  if (!run.wanted.empty()) ListExpected(run);
  return correctPaths.size();
}

bool ChooseRunArchives(RunState& run) {
  for (const PatchFile* file : run.wanted) run.wantedPaths.insert(run.wantedPaths.end(), file->path);
  std::vector<const PatchBundle*> archives;
  for (const PatchBundle& bundle : run.manifest.bundles) archives.push_back(&bundle);
  ArchiveChoice choice = ChooseArchives(archives, run.wantedPaths, run.wantedBytes);
  run.chosenBundles = std::move(choice.archives);
  run.bundleBytes = choice.bytes;
  return choice.isCheaper;
}

bool ForgetWantedFiles(RunState& run) {
  if (run.wanted.empty()) return false;
  const platform::MutexLock guard(run.stateLock);
  const std::vector<std::string> changing = PathsThatChange(run.record.State(), run.wanted);
  for (const std::string& path : changing) {
    // Another spelling of a wanted file comes from an older version and is not restored.
    if (run.expectedDigests.count(path) != 0) {
      run.forgotten.push_back({path, run.record.State().find(path)->second, StampOf(path)});
    }
    run.record.Forget(path);
  }
  return !changing.empty();
}

void RememberUntouchedFiles(RunState& run) {
  const platform::MutexLock guard(run.stateLock);
  for (const ForgottenFile& file : run.forgotten) {
    if (file.stamp && run.record.State().count(file.path) == 0 && StampOf(file.path) == file.stamp) {
      run.record.Enter(file.path, file.digest);
    }
  }
}

void AssignArchivePaths(RunState& run) {
  for (std::size_t index = 0; index < run.chosenBundles.size(); ++index) {
    for (const std::string& path : run.chosenBundles[index]->files) {
      if (run.wantedPaths.count(path) != 0) run.archivePaths.emplace(path, index);
    }
  }
  // Their time and size say nothing: some builds of miniz give an extracted file the time in the archive.
  std::erase_if(run.forgotten,
                [&](const ForgottenFile& file) { return run.archivePaths.count(file.path) != 0; });
}

void ListSingles(RunState& run) {
  std::set<std::string_view> paths;
  for (const PatchFile* file : run.wanted) {
    if (run.archivePaths.count(file->path) != 0) continue;
    const bool isEarlierEntry = run.expectedDigests.find(file->path)->second != file->sha256;
    if (isEarlierEntry || !paths.insert(file->path).second) continue;
    run.singles.push_back(file);
    run.singleBytes += file->size;
  }
}

}  // namespace patcher
