#pragma once

#include <cstdint>
#include <string>
#include <unordered_set>

#include "content_store.h"
#include "file_hasher.h"
#include "platform/mutex.h"

namespace patcher::publisher {

/// Verifies contents of a store and remembers the sound ones, so that each is read at most once in a run.
/// Contents that this run has written are not read. Any thread.
class VerifiedContents {
 public:
  explicit VerifiedContents(const ContentStore& store) : store_(store) {}

  /// Whether the content exists and has this size and digest. Makes a sound content readable for a web
  /// server. False also if it cannot be read, since the caller then replaces it if it can. Counts the bytes
  /// that it reads.
  [[nodiscard]] bool IsSound(const std::string& name, std::uint64_t size, const std::string& digest,
                             FileHasher& hasher);

  /// Call this after writing a content whose digest is known.
  void MarkSound(const std::string& name);

 private:
  const ContentStore& store_;
  platform::Mutex lock_;
  std::unordered_set<std::string> sound_ PATCHER_GUARDED_BY(lock_);
};

}  // namespace patcher::publisher
