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

/// The memory through which one thread reads the files that it hashes. Taken when the first file needs it and
/// then kept: for every file anew it would cost a small file more than its digest.
class ReadBlock {
 public:
  static constexpr std::size_t kSize = 1048576;  ///< bytes

  char* Data();

 private:
  std::unique_ptr<char[]> memory_;
};

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

  /// The same of a file that was just opened, through the caller's memory. `complete` says whether the file
  /// was open and could be read to its end.
  std::string HashFile(platform::FileReader& file, ReadBlock& block, bool& complete);

 private:
  platform::DigestProvider algorithm_;
  std::vector<std::vector<std::uint8_t>> hashObjects_;
  ReadBlock block_;
};

}  // namespace patcher
