#include "progress_line.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <system_error>

namespace patcher::publisher {
namespace {

constexpr std::chrono::milliseconds kTerminalPause{200};
constexpr std::chrono::seconds kShortestLogPause{5};
constexpr std::chrono::minutes kLongestLogPause{1};

/// Seconds before the first rate is shown.
constexpr double kFirstRate = 1;

/// False on systems without this name.
bool StandardErrorIsTerminal() {
  std::error_code error;
  return std::filesystem::is_character_file("/dev/stderr", error);
}

/// "0:07", "12:30", "1:02:03".
std::string ReadableSeconds(double seconds) {
  const long long total = std::llround(seconds);
  std::array<char, 48> text{};
  if (total < 3600) {
    std::snprintf(text.data(), text.size(), "%lld:%02lld", total / 60, total % 60);
  } else {
    std::snprintf(text.data(), text.size(), "%lld:%02lld:%02lld", total / 3600, total / 60 % 60, total % 60);
  }
  return text.data();
}

}  // namespace

std::string ReadableBytes(std::uint64_t bytes) {
  static constexpr std::array kUnits{"kB", "MB", "GB", "TB"};
  if (bytes < 1000) return std::to_string(bytes) + " bytes";
  double amount = static_cast<double>(bytes) / 1000.0;
  std::size_t unit = 0;
  for (; amount >= 999.95 && unit + 1 < kUnits.size(); ++unit) amount /= 1000.0;
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.1f %s", amount, kUnits[unit]);
  return text.data();
}

Progress::Progress(bool quiet) : quiet_(quiet), terminal_(StandardErrorIsTerminal()) {}

void Progress::Begin(const std::string& stage, std::size_t items, std::uint64_t bytes) {
  stage_ = stage;
  totalItems_ = items;
  totalBytes_ = bytes;
  items_ = 0;
  bytes_ = 0;
  begin_ = Clock::now();
  due_ = Pause({}).count();
}

void Progress::AddBytes(std::uint64_t count) {
  bytes_ += count;
  EmitIfDue();
}

void Progress::ItemDone() {
  ++items_;
  EmitIfDue();
}

void Progress::EmitIfDue() {
  if (totalItems_ == 0) return;
  const Clock::duration elapsed = Clock::now() - begin_;
  Clock::rep due = due_;
  if (elapsed.count() < due) return;
  // Only one of several workers prints the line that is due.
  if (due_.compare_exchange_strong(due, (elapsed + Pause(elapsed)).count())) Emit(false);
}

void Progress::End() {
  if (totalItems_ > 0) Emit(true);
  totalItems_ = 0;
}

Progress::Clock::duration Progress::Pause(Clock::duration elapsed) const {
  if (terminal_) return kTerminalPause;
  return std::clamp<Clock::duration>(elapsed, kShortestLogPause, kLongestLogPause);
}

std::string Progress::Line(Clock::duration elapsed, bool last) const {
  // The estimate was too high for contents that were not read twice, and too low for damaged ones.
  const bool isComplete = items_ == totalItems_;
  const std::uint64_t bytes = isComplete ? totalBytes_ : std::min<std::uint64_t>(bytes_, totalBytes_);
  std::string line = stage_ + ": " + std::to_string(items_) + "/" + std::to_string(totalItems_) + ", " +
                     ReadableBytes(bytes) + (isComplete ? "" : " of " + ReadableBytes(totalBytes_));
  const double seconds = std::chrono::duration<double>(elapsed).count();
  if (seconds < kFirstRate || bytes == 0) return line;
  const double rate = static_cast<double>(bytes) / seconds;
  line += ", " + ReadableBytes(static_cast<std::uint64_t>(rate)) + "/s, ";
  if (last) return line + ReadableSeconds(seconds);
  return line + ReadableSeconds(static_cast<double>(totalBytes_ - bytes) / rate) + " left";
}

void Progress::Emit(bool last) {
  if (quiet_) return;
  std::string line = Line(Clock::now() - begin_, last);
  const platform::MutexLock guard(lock_);
  const std::size_t length = line.size();
  if (terminal_) {
    if (length < lineLength_) line.append(lineLength_ - length, ' ');
    line.insert(line.begin(), '\r');
  }
  if (last || !terminal_) line += '\n';
  lineLength_ = last ? 0 : length;
  std::fputs(line.c_str(), stderr);
  std::fflush(stderr);
}

void Progress::Notice(const std::string& text) {
  if (quiet_) return;
  const platform::MutexLock guard(lock_);
  std::fprintf(stderr, "%snotice: %s\n", terminal_ && lineLength_ > 0 ? "\n" : "", text.c_str());
  lineLength_ = 0;
}

}  // namespace patcher::publisher
