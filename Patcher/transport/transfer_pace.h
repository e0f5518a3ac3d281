#pragma once

#include <chrono>
#include <cstdint>

namespace patcher {

/// Decides whether a transfer still brings something. Counts only the time spent waiting for bytes: a caller
/// that is busy with a block for long does not make the server slow.
class TransferPace {
 public:
  static constexpr std::chrono::seconds kPeriod{60};
  static constexpr std::uint64_t kLeastBytes = 4096;

  /// Counts one wait and what it brought. False if less than kLeastBytes have come in a kPeriod of waiting:
  /// the transfer counts as silent.
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
  std::uint64_t bytes_ = 0;  // in that time
};

}  // namespace patcher
