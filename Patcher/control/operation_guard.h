#pragma once

#include <atomic>
#include <optional>
#include <thread>
#include <utility>

namespace patcher {

class OperationLease;

/// Admits one long operation at a time: the update run, a verification or a repair. Any thread. Outlives its
/// leases.
class OperationGuard {
 public:
  /// The right to run an operation, or nothing if another one is running. Waits for an operation that is
  /// ending, which takes no longer than the return from its worker.
  [[nodiscard]] std::optional<OperationLease> TryTake();

 private:
  friend class OperationLease;
  enum class State { kFree, kTaken, kEnding };
  std::atomic<State> state_{State::kFree};
};

/// The guard is taken while this lives. A worker holds it, so that every way out of the worker releases the
/// guard, and so does a worker that could not be started.
class OperationLease {
 public:
  OperationLease(OperationLease&& other) noexcept : guard_(std::exchange(other.guard_, nullptr)) {}
  OperationLease& operator=(OperationLease&&) = delete;
  ~OperationLease() {
    if (guard_ != nullptr) guard_->state_.exchange(OperationGuard::State::kFree);
  }

  /// The operation is about to post its last event. A page that asks for the next operation as soon as it
  /// gets that event is not refused.
  void MarkEnding() { guard_->state_.exchange(OperationGuard::State::kEnding); }

 private:
  friend class OperationGuard;
  explicit OperationLease(OperationGuard& guard) : guard_(&guard) {}
  OperationGuard* guard_;
};

inline std::optional<OperationLease> OperationGuard::TryTake() {
  State seen = State::kFree;
  while (!state_.compare_exchange_weak(seen, State::kTaken)) {
    if (seen == State::kTaken) return std::nullopt;
    seen = State::kFree;
    std::this_thread::yield();
  }
  return OperationLease(*this);
}

}  // namespace patcher
