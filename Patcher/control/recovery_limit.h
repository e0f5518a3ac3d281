#pragma once

#include <chrono>
#include <deque>

namespace patcher {

/// Limits how often the page is reloaded after a web view process has died: three times in ten minutes.
/// Without a limit, a page that always crashes would keep the machine busy forever.
class RecoveryLimit {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;

  /// Whether the page may be reloaded now. If so, counts the reload. `now` never decreases.
  [[nodiscard]] bool Take(TimePoint now);

 private:
  std::deque<TimePoint> reloads_;  // reloads of the last ten minutes
};

}  // namespace patcher
