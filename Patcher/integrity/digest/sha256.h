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

/// Owner of one SHA-256 provider and of the memory through which files are read, for one thread. A pass over
/// many files keeps one: opening the provider and taking the memory costs more than the digest of a small
/// file. Digests are 64 lower-case hexadecimal characters.
class Sha256 {
 public:
  /// A running hash, fed by Update. One at a time is open on a Sha256, which outlives it.
  platform::DigestHash BeginHash();

  /// Finishes the hash and releases its working memory.
  std::string FinishHex(platform::DigestHash& hash);

  /// Digest of a file's content. A file that cannot be opened gives the digest of the empty message, and a
  /// read failure midway that of what was read: such a digest does not match the expected one.
  std::string HashFile(const std::filesystem::path& file);

  /// The same of a file that was just opened. `complete` says whether the file was open and could be read to
  /// its end.
  std::string HashFile(platform::FileReader& file, bool& complete);

 private:
  platform::DigestProvider algorithm_;
  std::vector<std::vector<std::uint8_t>> hashObjects_;
  std::unique_ptr<char[]> block_;  // taken for the first file
};

}  // namespace patcher
