#include "integrity/verify_files.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <system_error>

#include "control/protocol/ui_event.h"
#include "integrity/digest/sha256.h"
#include "platform/mutex.h"
#include "shared/program.h"
#include "transport/config.h"
#include "transport/run_pool.h"
#include "update/progress_tracker.h"

namespace patcher {
namespace {

namespace fs = std::filesystem;

constexpr std::int32_t kFilesPerProgress = 50;
constexpr std::int32_t kFilesPerStatus = 500;

enum class Outcome { kCorrect, kMissing, kDamaged };

struct FileCheck {
  Outcome outcome;
  bool examined = true;  ///< false: the file could not be examined, so its content is unknown
};

/// The check on a file that could not be opened for reading.
FileCheck CheckUnopened(const fs::path& place, const PatchFile& file) {
  std::error_code error;
  const fs::file_status status = fs::status(place, error);
  if (!fs::exists(status)) return {Outcome::kMissing, status.type() == fs::file_type::not_found};
  if (!fs::is_regular_file(status)) return {Outcome::kDamaged};
  const std::uint64_t size = fs::file_size(place, error);
  return {Outcome::kDamaged, !error && size != file.size};
}

/// `sha256` belongs to the worker and is created for the first file that needs it.
FileCheck CheckFile(const PatchFile& file, std::optional<Sha256>& sha256) {
  try {
    const fs::path place = InstalledPlace(file.path);
    platform::FileReader reader(place);
    if (!reader.Size()) return CheckUnopened(place, file);
    if (!sha256) sha256.emplace();
    if (*reader.Size() != file.size) return {Outcome::kDamaged};
    bool complete = false;
    const std::string digest = sha256->HashFile(reader, complete);
    return {digest == file.sha256 ? Outcome::kCorrect : Outcome::kDamaged, complete};
  } catch (const std::exception&) {
    return {Outcome::kDamaged, false};
  }
}

/// What the workers of one verification share.
class Pass {
 public:
  Pass(HostWindow& window, const PatchManifest& manifest, std::size_t workers)
      : window_(window),
        files_(manifest.files),
        total_(static_cast<std::int32_t>(files_.size())),
        digests_(workers) {}

  void VerifyOneFile(std::size_t index, unsigned worker) {
    const PatchFile& file = files_[index];
    const FileCheck check = CheckFile(file, digests_[worker]);
    // Counted and reported under one lock: reports in another order would move the progress bar backwards.
    const platform::MutexLock guard(lock_);
    if (check.outcome == Outcome::kCorrect) {
      ++ok_;
    } else {
      ++(check.outcome == Outcome::kMissing ? missing_ : corrupt_);
      bytes_ += file.size;
      samples_.push_back(file.path);
      if (!check.examined) unexamined_.push_back(file.path);
    }
    Report(file, ++done_);
  }

  /// Called after the workers have ended.
  void MoveResult(CheckResult& result) {
    const platform::MutexLock guard(lock_);
    result = {total_, ok_, missing_, corrupt_, bytes_, std::move(samples_), std::move(unexamined_)};
    // The workers append in any order. Sorted lists are the same each time.
    std::sort(result.samples.begin(), result.samples.end());
    std::sort(result.unexamined.begin(), result.unexamined.end());
  }

 private:
  void Report(const PatchFile& file, std::int32_t done) PATCHER_REQUIRES(lock_) {
    if (done % kFilesPerProgress != 0 && done != total_) return;
    ProgressReport report;
    report.percent = PercentDone(static_cast<std::uint64_t>(done), static_cast<std::uint64_t>(total_));
    report.currentFile = file.path;
    report.fileIndex = done;
    report.fileCount = total_;
    PostProgress(window_, report);
    if (done % kFilesPerStatus == 0) {
      PostStatus(window_,
                 "Verification : " + std::to_string(done) + " / " + std::to_string(total_) + " fichiers...");
    }
  }

  HostWindow& window_;
  const std::vector<PatchFile>& files_;
  const std::int32_t total_;
  std::vector<std::optional<Sha256>> digests_;  // one for each worker
  platform::Mutex lock_;
  std::int32_t ok_ PATCHER_GUARDED_BY(lock_) = 0;
  std::int32_t missing_ PATCHER_GUARDED_BY(lock_) = 0;
  std::int32_t corrupt_ PATCHER_GUARDED_BY(lock_) = 0;
  std::int32_t done_ PATCHER_GUARDED_BY(lock_) = 0;
  std::uint64_t bytes_ PATCHER_GUARDED_BY(lock_) = 0;
  std::vector<std::string> samples_ PATCHER_GUARDED_BY(lock_);
  std::vector<std::string> unexamined_ PATCHER_GUARDED_BY(lock_);
};

}  // namespace

void VerifyFiles(HostWindow& window, const PatchManifest& manifest, CheckResult& result) {
  const int workers = std::max(PatchConfig::Current().connections, 1);
  Pass pass(window, manifest, static_cast<std::size_t>(workers));
  const bool complete = RunPool(manifest.files.size(), [&pass](std::size_t index, unsigned worker) {
    pass.VerifyOneFile(index, worker);
    return true;
  });
  // An incomplete list must not look like a complete one.
  if (!complete) throw std::runtime_error("the verification was cut short");
  pass.MoveResult(result);
}

}  // namespace patcher
