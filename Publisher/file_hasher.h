#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <ios>
#include <memory>
#include <string>

#include "integrity/digest/sha256.h"
#include "progress_line.h"

namespace patcher::publisher {

/// What a file held when it was read.
struct FileContent {
  std::string digest;
  std::uint64_t size = 0;
};

/// Reads files and hashes what it reads. One thread only.
class FileHasher {
 public:
  explicit FileHasher(Progress& progress);

  /// Raises PublishError if the file cannot be read to its end. The bytes count in the progress.
  FileContent Read(const std::filesystem::path& file);

  /// Reads `file` once and writes what it reads to `copy`. The bytes count as well.
  FileContent Copy(const std::filesystem::path& file, const std::filesystem::path& copy);

  /// Counts bytes that were read elsewhere for this worker's item.
  void Count(std::uint64_t bytes) { progress_.AddBytes(bytes); }

  Sha256& Digests() { return sha256_; }

 private:
  using BlockTaker = std::function<void(const char* block, std::streamsize size)>;
  FileContent Read(const std::filesystem::path& file, const BlockTaker& take);

  Progress& progress_;
  Sha256 sha256_;
  std::unique_ptr<char[]> block_;
};

}  // namespace patcher::publisher
