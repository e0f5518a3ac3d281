#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>

#include "control/protocol/host_window.h"
#include "platform/mutex.h"

namespace patcher {

/// Counts bytes and finished items of one download stage across all threads, and reports to the page at most
/// ten times a second unless forced. Any thread. It takes no other lock while its own is held.
class ProgressTracker {
 public:
  ProgressTracker(HostWindow& window, std::uint64_t totalBytes, std::uint32_t itemCount);

  /// Name of the item that a worker begins. Emits nothing.
  void SetCurrentFile(const std::string& name);
  void AddBytes(std::uint64_t count);
  /// Takes the bytes of a failed attempt back. Emits nothing.
  void RollBack(std::uint64_t count);
  /// One more item is finished; emits at once and returns the new count.
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

/// Whole percent of `done` in `total`, truncated, at most 100; 100 for a total of 0.
std::int32_t PercentDone(std::uint64_t done, std::uint64_t total);

}  // namespace patcher
