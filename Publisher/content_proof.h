#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <unordered_set>

#include "content_store.h"
#include "file_hasher.h"

namespace patcher::publisher {

/// Knows which contents of a store hold what their names say. Each is read once in a run at most; what this
/// run has written need not be read. Any thread.
class ContentProof {
 public:
  explicit ContentProof(const ContentStore& store) : store_(store) {}

  /// Whether the content is there, whole, and readable for a web server. False also if it cannot be read:
  /// what is wrong is replaced, if there is something to replace it by. Counts the bytes that it reads.
  bool IsSound(const std::string& name, std::uint64_t size, const std::string& digest, FileHasher& hasher);

  /// The content was just written from bytes of this digest.
  void Written(const std::string& name);

 private:
  const ContentStore& store_;
  std::mutex lock_;  ///< guards sound_
  std::unordered_set<std::string> sound_;
};

}  // namespace patcher::publisher
