#pragma once

#include <chrono>
#include <cstdint>

namespace patcher {

/// Decides whether a transfer is too slow. Counts only the time spent waiting for bytes, not the time that
/// the caller needs to process a block.
class TransferPace {
 public:
  static constexpr std::chrono::seconds kPeriod{60};
  static constexpr std::uint64_t kLeastBytes = 4096;

  /// Counts one wait and the bytes that arrived. Returns false if fewer than kLeastBytes arrived in a kPeriod
  /// of waiting: the transfer is then too slow.
  bool Count(std::chrono::nanoseconds waited, std::uint64_t bytes) {
    waited_ += waited;
    bytes_ += bytes;
    if (bytes_ < kLeastBytes) return waited_ < kPeriod;
    waited_ = {};
    bytes_ = 0;
    return true;
  }

 private:
  std::chrono::nanoseconds waited_{};
  std::uint64_t bytes_ = 0;  // received in this time
};

}  // namespace patcher
