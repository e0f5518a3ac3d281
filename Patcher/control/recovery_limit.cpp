#include "control/recovery_limit.h"

namespace patcher {
namespace {

constexpr std::size_t kMaxReloads = 3;
constexpr std::chrono::minutes kPeriod{10};

}  // namespace

bool RecoveryLimit::Take(TimePoint now) {
  while (!reloads_.empty() && now - reloads_.front() >= kPeriod) reloads_.pop_front();
  if (reloads_.size() >= kMaxReloads) return false;
  reloads_.push_back(now);
  return true;
}

}  // namespace patcher
