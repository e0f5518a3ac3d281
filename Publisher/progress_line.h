#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>

namespace patcher::publisher {

/// Reports on standard error how far long work has come, how fast it is and how long it will take: one line
/// that is rewritten on a terminal, else a line now and then, ever more rarely. Also the place for notices,
/// which must not run into that line. AddBytes, ItemDone and Notice may be called on any thread, the others
/// on the main thread with no workers active.
class Progress {
 public:
  /// A quiet one says nothing at all.
  explicit Progress(bool quiet);

  /// Begins a stage, for example "hashing".
  void Begin(const std::string& stage, std::size_t items, std::uint64_t bytes);
  /// Counts nothing and says nothing while there is no stage.
  void AddBytes(std::uint64_t count);
  void ItemDone();
  /// Ends the stage with a last line.
  void End();

  void Notice(const std::string& text);

 private:
  using Clock = std::chrono::steady_clock;
  void EmitIfDue();
  void Emit(bool last);
  std::string Line(Clock::duration elapsed, bool last) const;
  Clock::duration Pause(Clock::duration elapsed) const;

  const bool quiet_;
  const bool terminal_;
  std::string stage_;
  std::size_t totalItems_ = 0;
  std::uint64_t totalBytes_ = 0;
  Clock::time_point begin_;
  std::atomic<std::size_t> items_{0};
  std::atomic<std::uint64_t> bytes_{0};
  std::atomic<Clock::rep> due_{0};  ///< time since begin_ at which the next line is due
  std::mutex lock_;                 ///< guards standard error and lineLength_
  std::size_t lineLength_ = 0;      ///< of the unfinished line on the terminal
};

/// "12.3 MB" and the like; 1 MB is 1,000,000 bytes.
std::string ReadableBytes(std::uint64_t bytes);

}  // namespace patcher::publisher
