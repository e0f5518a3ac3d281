#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/digest.h"

namespace patcher {

/// Owner of one SHA-256 provider, for one thread and one unit of work. Digests are 64 lower-case hexadecimal
/// characters.
class Sha256 {
 public:
  /// A running hash, fed by Update. One at a time is open on a Sha256, which outlives it.
  platform::DigestHash BeginHash();

  /// Finishes the hash and releases its working memory.
  std::string FinishHex(platform::DigestHash& hash);

  /// Digest of a file's content. A file that cannot be opened gives the digest of the empty message, and a
  /// read failure midway that of what was read: a digest that does not match tells the caller.
  std::string HashFile(const std::filesystem::path& file);

 private:
  platform::DigestProvider algorithm_;
  std::vector<std::vector<std::uint8_t>> hashObjects_;
};

}  // namespace patcher
