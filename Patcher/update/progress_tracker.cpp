#include "update/progress_tracker.h"

#include <algorithm>

#include "control/protocol/ui_event.h"

namespace patcher {
namespace {

constexpr std::chrono::milliseconds kEmitInterval{100};
constexpr double kMinSpeedSeconds = 0.1;

}  // namespace

std::int32_t PercentDone(std::uint64_t done, std::uint64_t total) {
  if (done >= total) return 100;
  // Divides first if the multiplication would overflow: a manifest may contain any size.
  constexpr std::uint64_t kLargest = UINT64_MAX / 100;
  return static_cast<std::int32_t>(total <= kLargest ? done * 100 / total : done / (total / 100));
}

ProgressTracker::ProgressTracker(HostWindow& window, std::uint64_t totalBytes, std::uint32_t itemCount)
    : window_(window),
      totalBytes_(totalBytes),
      itemCount_(itemCount),
      startTime_(Clock::now()),
      lastEmit_(startTime_) {}

void ProgressTracker::SetCurrentFile(const std::string& name) {
  const platform::MutexLock guard(lock_);
  currentFile_ = name;
}

void ProgressTracker::AddBytes(std::uint64_t count) {
  downloadedBytes_ += count;
  Emit(false);
}

void ProgressTracker::RollBack(std::uint64_t count) { downloadedBytes_ -= count; }

std::int32_t ProgressTracker::ItemDone() {
  const std::uint64_t done = ++itemsDone_;
  Emit(true);
  return static_cast<std::int32_t>(done);
}

void ProgressTracker::Emit(bool force) {
  ProgressReport report;
  {
    const platform::MutexLock guard(lock_);
    const Clock::time_point now = Clock::now();
    if (!force && now - lastEmit_ < kEmitInterval) return;
    lastEmit_ = now;
    report.currentFile = currentFile_;
    report.downloadedBytes = downloadedBytes_;
    const double elapsed = std::chrono::duration<double>(now - startTime_).count();
    report.percent = PercentDone(report.downloadedBytes, totalBytes_);
    if (elapsed > kMinSpeedSeconds) {
      report.speedBps = static_cast<std::uint64_t>(static_cast<double>(report.downloadedBytes) / elapsed);
    }
  }
  report.totalBytes = totalBytes_;
  report.fileIndex = static_cast<std::int32_t>(itemsDone_.load());
  report.fileCount = static_cast<std::int32_t>(itemCount_);
  PostProgress(window_, report);
}

}  // namespace patcher
