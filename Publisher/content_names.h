#pragma once

#include <mutex>
#include <string>
#include <unordered_map>

#include "manifest_document.h"

namespace patcher::publisher {

/// Gives contents their names. A name is made of the first digits of the digest, since each player reads
/// every name at every start. Should two contents ever have these digits in common, the second gets a name of
/// all its digits: no name ever means two contents. Any thread.
class ContentNames {
 public:
  /// The names of a manifest, and the contents that they mean.
  void Add(const Publication& publication);

  /// The same for the same digest, always.
  std::string NameOf(const std::string& digest);

 private:
  std::mutex lock_;                                      ///< guards owners_
  std::unordered_map<std::string, std::string> owners_;  ///< by name: the digest
};

}  // namespace patcher::publisher
