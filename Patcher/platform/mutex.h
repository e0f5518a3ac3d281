#pragma once

#include <condition_variable>
#include <mutex>

// Annotations that clang checks at compile time with -Wthread-safety: a member that is PATCHER_GUARDED_BY a
// mutex may be used only while that mutex is held, and a function that PATCHER_REQUIRES a mutex may be called
// only then. The annotations are empty for other compilers.
#if defined(__clang__)
#define PATCHER_THREAD_ANNOTATION(annotation) __attribute__((annotation))
#else
#define PATCHER_THREAD_ANNOTATION(annotation)
#endif
#define PATCHER_GUARDED_BY(mutex) PATCHER_THREAD_ANNOTATION(guarded_by(mutex))
#define PATCHER_REQUIRES(mutex) PATCHER_THREAD_ANNOTATION(requires_capability(mutex))

namespace platform {

/// std::mutex with annotations, which std::mutex itself lacks. Lock it with a MutexLock.
class PATCHER_THREAD_ANNOTATION(capability("mutex")) Mutex {
 public:
  /// Returns true if it locked the mutex; the caller then immediately creates a MutexLock with
  /// std::adopt_lock.
  [[nodiscard]] bool TryLock() PATCHER_THREAD_ANNOTATION(try_acquire_capability(true)) {
    return mutex_.try_lock();
  }

 private:
  friend class MutexLock;
  std::mutex mutex_;
};

/// Holds a mutex until the end of a scope.
class PATCHER_THREAD_ANNOTATION(scoped_lockable) MutexLock {
 public:
  explicit MutexLock(Mutex& mutex) PATCHER_THREAD_ANNOTATION(acquire_capability(mutex))
      : lock_(mutex.mutex_) {}
  /// Takes ownership of a mutex that the caller has locked.
  MutexLock(Mutex& mutex, std::adopt_lock_t adopt) PATCHER_REQUIRES(mutex) : lock_(mutex.mutex_, adopt) {}
  ~MutexLock() PATCHER_THREAD_ANNOTATION(release_capability()) {}
  MutexLock(const MutexLock&) = delete;
  MutexLock& operator=(const MutexLock&) = delete;

  /// Releases the mutex while it waits. May return without a notification.
  void Wait(std::condition_variable& condition) { condition.wait(lock_); }

 private:
  std::unique_lock<std::mutex> lock_;
};

}  // namespace platform
