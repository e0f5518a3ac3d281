#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/mutex.h"

namespace patcher::publisher {

/// Prints the progress of long work to standard error, with its speed and the time left. On a terminal,
/// rewrites one line; otherwise prints lines, less and less often. Also prints notices, which must not
/// overwrite that line. Call AddBytes, ItemDone and Notice on any thread, the others on the main thread while
/// no workers are active.
class Progress {
 public:
  /// `quiet`: print nothing.
  explicit Progress(bool quiet);

  /// Starts a stage, for example "hashing".
  void Begin(const std::string& stage, std::size_t items, std::uint64_t bytes);
  /// Has no effect outside a stage.
  void AddBytes(std::uint64_t count);
  void ItemDone();
  /// Ends the stage with a last line.
  void End();

  void Notice(const std::string& text);

 private:
  using Clock = std::chrono::steady_clock;
  void EmitIfDue();
  void Emit(bool last);
  [[nodiscard]] std::string Line(Clock::duration elapsed, bool last) const;
  [[nodiscard]] Clock::duration Pause(Clock::duration elapsed) const;

  const bool quiet_;
  const bool terminal_;
  std::string stage_;
  std::size_t totalItems_ = 0;
  std::uint64_t totalBytes_ = 0;
  Clock::time_point begin_;
  std::atomic<std::size_t> items_{0};
  std::atomic<std::uint64_t> bytes_{0};
  std::atomic<Clock::rep> due_{0};                        ///< time after begin_ when the next line is due
  platform::Mutex lock_;                                  ///< also guards standard error
  std::size_t lineLength_ PATCHER_GUARDED_BY(lock_) = 0;  ///< of the unfinished line on the terminal
};

/// "12.3 MB" and the like; 1 MB is 1,000,000 bytes.
[[nodiscard]] std::string ReadableBytes(std::uint64_t bytes);

}  // namespace patcher::publisher
