#pragma once

#include <string>
#include <unordered_map>

#include "manifest_document.h"
#include "platform/mutex.h"

namespace patcher::publisher {

/// Gives contents their names. A name consists of the first digits of the digest and is short, since each
/// player downloads all names at every start. If two contents have the same first digits, the second gets a
/// name with all its digits, so a name never means two contents. Any thread.
class ContentNames {
 public:
  /// Adds the names of a manifest, with the digests of their contents.
  void Add(const Publication& publication);

  /// Always returns the same name for the same digest.
  [[nodiscard]] std::string NameOf(const std::string& digest);

 private:
  platform::Mutex lock_;
  std::unordered_map<std::string, std::string> owners_ PATCHER_GUARDED_BY(lock_);  ///< digests by name
};

}  // namespace patcher::publisher
