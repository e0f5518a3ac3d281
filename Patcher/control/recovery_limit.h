#pragma once

#include <chrono>
#include <deque>

namespace patcher {

/// How often the page is loaded again after one of the web view's processes has died: three times in ten
/// minutes, so that a page that dies each time at once does not keep the machine busy without end.
class RecoveryLimit {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;

  /// Whether the page may be loaded again now; if so, that counts. `now` never goes back.
  [[nodiscard]] bool Take(TimePoint now);

 private:
  std::deque<TimePoint> taken_;  // of the last ten minutes
};

}  // namespace patcher
