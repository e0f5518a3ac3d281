#pragma once

#include <string>
#include <vector>

#include "platform/mutex.h"

namespace patcher {

/// A file of the manifest that is in its place.
struct InstalledFile {
  std::string path;  ///< as in the manifest
  std::string digest;
};

/// Files that are in place, but whose content or directory entry a power cut may still take away. The record
/// may name a file only after it has come out of here. Any thread; no lock is held while a file is flushed,
/// but for the one that keeps two flushes apart.
class UnflushedFiles {
 public:
  /// Called by the thread that has put the file in place.
  void Add(InstalledFile file);

  /// Flushes what has been added so far and returns it. What could not be flushed waits for the next call.
  [[nodiscard]] std::vector<InstalledFile> Flush();

  /// The same, but returns nothing at once if another thread is flushing.
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
