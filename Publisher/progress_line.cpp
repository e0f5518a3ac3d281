#include "progress_line.h"

#include <array>
#include <cstdio>
#include <filesystem>
#include <system_error>

namespace patcher::publisher {
namespace {

constexpr std::chrono::milliseconds kTerminalPause{200};
constexpr std::chrono::seconds kLogPause{5};

/// Systems that have no such name get the sparse lines.
bool StandardErrorIsTerminal() {
  std::error_code error;
  return std::filesystem::is_character_file("/dev/stderr", error);
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

void Progress::Begin(std::string stage, std::size_t items, std::uint64_t bytes) {
  stage_ = std::move(stage);
  totalItems_ = items;
  totalBytes_ = bytes;
  items_ = 0;
  bytes_ = 0;
  const auto pause = terminal_ ? Clock::duration(kTerminalPause) : Clock::duration(kLogPause);
  due_ = (Clock::now() + pause).time_since_epoch().count();
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
  const auto now = Clock::now().time_since_epoch();
  Clock::rep due = due_;
  if (now.count() < due) return;
  const auto pause = terminal_ ? Clock::duration(kTerminalPause) : Clock::duration(kLogPause);
  // Only one of several workers that see it due says it.
  if (due_.compare_exchange_strong(due, (now + pause).count())) Emit(false);
}

void Progress::End() {
  if (totalItems_ > 0) Emit(true);
}

void Progress::Emit(bool last) {
  if (quiet_) return;
  std::string line = stage_ + ": " + std::to_string(items_) + "/" + std::to_string(totalItems_) + ", " +
                     ReadableBytes(bytes_) + " of " + ReadableBytes(totalBytes_);
  std::lock_guard guard(lock_);
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
  std::lock_guard guard(lock_);
  std::fprintf(stderr, "%snotice: %s\n", terminal_ && lineLength_ > 0 ? "\n" : "", text.c_str());
  lineLength_ = 0;
}

}  // namespace patcher::publisher
