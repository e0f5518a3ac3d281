#pragma once

#include <atomic>
#include <thread>

namespace patcher {

/// Admits one long operation at a time: the update run, a verification or a repair. Any thread.
class OperationGuard {
 public:
  /// True if no operation was running; the caller's one now is. Waits for an operation that is ending: that
  /// takes it no longer than returning from its worker.
  bool TryTake() {
    State seen = State::kFree;
    while (!state_.compare_exchange_weak(seen, State::kTaken)) {
      if (seen == State::kTaken) return false;
      seen = State::kFree;
      std::this_thread::yield();
    }
    return true;
  }

  /// The running operation is about to say its last word. Who hears it and asks for the next operation at
  /// once must not be refused.
  void MarkEnding() { state_.exchange(State::kEnding); }

  void Release() { state_.exchange(State::kFree); }

 private:
  enum class State { kFree, kTaken, kEnding };
  std::atomic<State> state_{State::kFree};
};

/// A taken guard, released when this goes: on every path out of a worker, and also when no worker could be
/// started.
class OperationLease {
 public:
  explicit OperationLease(OperationGuard& taken) : guard_(&taken) {}
  ~OperationLease() { guard_->Release(); }
  void MarkEnding() { guard_->MarkEnding(); }
  OperationLease(const OperationLease&) = delete;
  OperationLease& operator=(const OperationLease&) = delete;

 private:
  OperationGuard* guard_;
};

}  // namespace patcher
