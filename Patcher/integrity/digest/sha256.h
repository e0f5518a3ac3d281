#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "platform/digest.h"
#include "platform/file_reader.h"

namespace patcher {

/// Computes SHA-256 digests. One thread only. Keep one object for many files: it opens the provider and
/// allocates the read buffer once, which costs more than the digest of a small file. Digests are 64
/// lower-case hexadecimal digits.
class Sha256 {
 public:
  /// Starts a hash; the caller passes the data to its Update. Only one hash at a time. The Sha256 must
  /// outlive it.
  platform::DigestHash BeginHash();

  /// Finishes the hash and releases its working memory.
  std::string FinishHex(platform::DigestHash& hash);

  /// The digest of a file's content. If the file cannot be opened, the digest of the empty message; if
  /// reading fails in the middle, that of the bytes read so far. Neither matches the expected digest.
  std::string HashFile(const std::filesystem::path& file);

  /// The same for a file that was just opened. `complete` is true if the file was open and could be read to
  /// its end.
  std::string HashFile(platform::FileReader& file, bool& complete);

 private:
  platform::DigestProvider algorithm_;
  std::vector<std::vector<std::uint8_t>> hashObjects_;
  std::unique_ptr<char[]> block_;  // allocated for the first file
};

}  // namespace patcher
