#pragma once

#include <chrono>
#include <filesystem>
#include <memory>

namespace platform {

/// Keeps several processes from working in one directory at the same time. Advisory: it binds only those who
/// take it. Released when it goes or when the process dies, however that happens. Leaves nothing on the disk.
/// Windows: accounts and elevated processes exclude each other too. Used by one thread.
class DirectoryLock {
 public:
  /// Takes nothing yet.
  explicit DirectoryLock(const std::filesystem::path& directory);
  ~DirectoryLock();
  DirectoryLock(const DirectoryLock&) = delete;
  DirectoryLock& operator=(const DirectoryLock&) = delete;

  /// Waits until the lock is free and takes it; `patience` is below a day. False if another process holds it
  /// for that long. True also where the system offers no such lock (some network file systems): a player must
  /// not be locked out for that.
  [[nodiscard]] bool TakeWithin(std::chrono::milliseconds patience);

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace platform
