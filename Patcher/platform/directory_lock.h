#pragma once

#include <chrono>
#include <filesystem>
#include <memory>

namespace platform {

/// Keeps several processes from working in one directory at the same time. Advisory: it affects only
/// processes that take the lock. The destructor and the end of the process, even a crash, release it. Leaves
/// nothing on the disk. Windows: the lock also works between accounts and with elevated processes. Used by
/// one thread.
class DirectoryLock {
 public:
  /// Does not take the lock.
  explicit DirectoryLock(const std::filesystem::path& directory);
  ~DirectoryLock();
  DirectoryLock(const DirectoryLock&) = delete;
  DirectoryLock& operator=(const DirectoryLock&) = delete;

  /// Waits up to `timeout` (less than a day) for the lock and takes it. Returns false if another process
  /// holds it for that long. Returns true where the system has no such lock (some network file systems): a
  /// player must not be locked out because of that.
  [[nodiscard]] bool TakeWithin(std::chrono::milliseconds timeout);

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace platform
