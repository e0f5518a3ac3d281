#include "integrity/verify_files.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <filesystem>
#include <mutex>
#include <stdexcept>
#include <system_error>

#include "control/ui_event.h"
#include "integrity/sha256.h"
#include "platform/text.h"
#include "shared/program.h"
#include "transport/config.h"
#include "update/download_pool.h"
#include "update/progress_tracker.h"

namespace patcher {
namespace {

namespace fs = std::filesystem;

constexpr std::int32_t kFilesPerProgress = 50;
constexpr std::int32_t kFilesPerStatus = 500;

enum class Verdict { kCorrect, kMissing, kCorrupt };

Verdict Judge(const PatchFile& file) {
  try {
    const fs::path place = ExeDir() / platform::PathFromBytes(file.path);
    std::error_code error;
    const std::uint64_t size = fs::file_size(place, error);
    // What has a size exists: only the rest is looked at twice.
    if (error) return fs::exists(place, error) ? Verdict::kCorrupt : Verdict::kMissing;
    Sha256 sha256;
    if (size != file.size) return Verdict::kCorrupt;
    return sha256.HashFile(place) == file.sha256 ? Verdict::kCorrect : Verdict::kCorrupt;
  } catch (const std::exception&) {
    return Verdict::kCorrupt;
  }
}

/// What the workers of one pass share.
class Pass {
 public:
  Pass(HostWindow& window, const PatchManifest& manifest)
      : window_(window), files_(manifest.files), total_(static_cast<std::int32_t>(files_.size())) {}

  void VerifyOneFile(std::size_t index) {
    const PatchFile& file = files_[index];
    const Verdict verdict = Judge(file);
    if (verdict == Verdict::kCorrect) {
      ++ok_;
    } else {
      ++(verdict == Verdict::kMissing ? missing_ : corrupt_);
      bytes_ += file.size;
      std::lock_guard guard(lock_);
      samples_.push_back(file.path);
    }
    Tell(file, ++done_);
  }

  /// After the workers have ended.
  void MoveResult(CheckResult& result) {
    result = {total_, ok_, missing_, corrupt_, bytes_, std::move(samples_)};
    // The workers append as they finish; the list is the same from one pass to the next.
    std::sort(result.samples.begin(), result.samples.end());
  }

 private:
  void Tell(const PatchFile& file, std::int32_t done) {
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
  std::atomic<std::int32_t> ok_{0};
  std::atomic<std::int32_t> missing_{0};
  std::atomic<std::int32_t> corrupt_{0};
  std::atomic<std::int32_t> done_{0};
  std::atomic<std::uint64_t> bytes_{0};
  std::mutex lock_;  // guards the one below
  std::vector<std::string> samples_;
};

}  // namespace

void VerifyFiles(HostWindow& window, const PatchManifest& manifest, CheckResult& result) {
  Pass pass(window, manifest);
  const bool complete = ParallelRun(manifest.files.size(), PatchConfig::Current().connections,
                                    [&pass](std::size_t index, unsigned) {
                                      pass.VerifyOneFile(index);
                                      return true;
                                    });
  // A list that lacks files must not be taken for the whole.
  if (!complete) throw std::runtime_error("the verification was cut short");
  pass.MoveResult(result);
}

}  // namespace patcher
