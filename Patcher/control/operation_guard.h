#pragma once

#include <atomic>
#include <optional>
#include <thread>
#include <utility>

namespace patcher {

class OperationLease;

/// Allows one long operation at a time: the update run, a verification or a repair. Any thread. Outlives its
/// leases.
class OperationGuard {
 public:
  /// Returns a lease to run an operation, or nothing if another operation is running. Waits for an operation
  /// that is ending, which only has to return from its worker.
  [[nodiscard]] std::optional<OperationLease> TryTake();

 private:
  friend class OperationLease;
  enum class State { kFree, kTaken, kEnding };
  std::atomic<State> state_{State::kFree};
};

/// Holds the guard for its lifetime. The worker owns it, so the guard is released however the worker ends, or
/// if it cannot be started.
class OperationLease {
 public:
  OperationLease(OperationLease&& other) noexcept : guard_(std::exchange(other.guard_, nullptr)) {}
  OperationLease& operator=(OperationLease&&) = delete;
  ~OperationLease() {
    if (guard_ != nullptr) guard_->state_.exchange(OperationGuard::State::kFree);
  }

  /// Called before the operation posts its last event. The page may then start the next operation as soon as
  /// it receives that event.
  void MarkEnding() { guard_->state_.exchange(OperationGuard::State::kEnding); }

 private:
  friend class OperationGuard;
  explicit OperationLease(OperationGuard& guard) : guard_(&guard) {}
  OperationGuard* guard_;
};

inline std::optional<OperationLease> OperationGuard::TryTake() {
  State state = State::kFree;
  while (!state_.compare_exchange_weak(state, State::kTaken)) {
    if (state == State::kTaken) return std::nullopt;
    state = State::kFree;
    std::this_thread::yield();
  }
  return OperationLease(*this);
}

}  // namespace patcher
