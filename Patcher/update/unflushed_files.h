#pragma once

#include <string>
#include <vector>

#include "platform/mutex.h"

namespace patcher {

/// A file of the manifest that is installed in its place.
struct InstalledFile {
  std::string path;  ///< as in the manifest
  std::string digest;
};

/// Installed files whose content or directory entry may not be on the disk yet, so that a power cut could
/// lose them. A file may enter the record only after Flush or TryFlush has returned it. Any thread. While it
/// flushes files, it holds only the lock that prevents two flushes at the same time.
class UnflushedFiles {
 public:
  /// Call this on the thread that has installed the file.
  void Add(InstalledFile file);

  /// Flushes the files added so far and returns them. Keeps those that could not be flushed for the next
  /// call.
  [[nodiscard]] std::vector<InstalledFile> Flush();

  /// The same, but returns an empty list at once if another thread is flushing.
  [[nodiscard]] std::vector<InstalledFile> TryFlush();

  /// Whether everything that was added has been flushed and returned.
  [[nodiscard]] bool IsEmpty();

 private:
  struct Entry {
    InstalledFile file;
    bool started;  // the first step of its flush has succeeded
  };

  std::vector<InstalledFile> FlushBatch() PATCHER_REQUIRES(flushLock_);

  platform::Mutex flushLock_;
  platform::Mutex lock_;
  std::vector<Entry> entries_ PATCHER_GUARDED_BY(lock_);
};

}  // namespace patcher
