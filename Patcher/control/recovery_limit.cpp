#include "control/recovery_limit.h"

namespace patcher {
namespace {

constexpr std::size_t kMostRecoveries = 3;
constexpr std::chrono::minutes kPeriod{10};

}  // namespace

bool RecoveryLimit::Take(TimePoint now) {
  while (!taken_.empty() && now - taken_.front() >= kPeriod) taken_.pop_front();
  if (taken_.size() >= kMostRecoveries) return false;
  taken_.push_back(now);
  return true;
}

}  // namespace patcher
