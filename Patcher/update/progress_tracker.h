#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>

#include "control/protocol/host_window.h"
#include "platform/mutex.h"

namespace patcher {

/// Counts the bytes and finished items of one download stage for all its threads, and reports them to the
/// page, at most ten times a second unless forced. Any thread. Takes no other lock while it holds its own.
class ProgressTracker {
 public:
  ProgressTracker(HostWindow& window, std::uint64_t totalBytes, std::uint32_t itemCount);

  /// Sets the name of the item that a worker starts. Emits nothing.
  void SetCurrentFile(const std::string& name);
  void AddBytes(std::uint64_t count);
  /// Subtracts the bytes of a failed attempt. Emits nothing.
  void RollBack(std::uint64_t count);
  /// Counts a finished item, emits at once and returns the new count.
  std::int32_t ItemDone();
  void Emit(bool force);

 private:
  using Clock = std::chrono::steady_clock;

  HostWindow& window_;
  const std::uint64_t totalBytes_;
  const std::uint32_t itemCount_;
  const Clock::time_point startTime_;
  std::atomic<std::uint64_t> downloadedBytes_{0};
  std::atomic<std::uint64_t> itemsDone_{0};
  platform::Mutex lock_;
  Clock::time_point lastEmit_ PATCHER_GUARDED_BY(lock_);
  std::string currentFile_ PATCHER_GUARDED_BY(lock_);
};

/// The percentage of `done` in `total`, truncated, at most 100. 100 if `total` is 0.
std::int32_t PercentDone(std::uint64_t done, std::uint64_t total);

}  // namespace patcher
