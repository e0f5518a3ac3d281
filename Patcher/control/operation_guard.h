#pragma once

#include <atomic>

namespace patcher {

/// Admits one long operation at a time: the update run, a verification or a repair. Any thread.
class OperationGuard {
 public:
  /// True if no operation was running; the caller's one now is.
  bool TryTake() {
    bool expected = false;
    return busy_.compare_exchange_strong(expected, true);
  }
  void Release() { busy_.exchange(false); }

 private:
  std::atomic<bool> busy_{false};
};

/// A taken guard, released when this goes: on every path out of a worker, and also when no worker could be
/// started.
class OperationLease {
 public:
  explicit OperationLease(OperationGuard& taken) : guard_(&taken) {}
  ~OperationLease() { guard_->Release(); }
  OperationLease(const OperationLease&) = delete;
  OperationLease& operator=(const OperationLease&) = delete;

 private:
  OperationGuard* guard_;
};

}  // namespace patcher
