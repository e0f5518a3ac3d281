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

/// The digest and size of a file when it was read.
struct FileContent {
  std::string digest;
  std::uint64_t size = 0;
};

/// Reads and hashes files. One thread only.
class FileHasher {
 public:
  explicit FileHasher(Progress& progress);

  /// Raises PublishError if the file cannot be read to its end. Counts the bytes in the progress.
  [[nodiscard]] FileContent Read(const std::filesystem::path& file);

  /// Reads and hashes `file` and copies it to `copy` in one pass. Counts the bytes too.
  [[nodiscard]] FileContent Copy(const std::filesystem::path& file, const std::filesystem::path& copy);

  /// Counts bytes of this worker's item that other code has read.
  void Count(std::uint64_t bytes) { progress_.AddBytes(bytes); }

  [[nodiscard]] Sha256& Digests() { return sha256_; }

 private:
  using BlockTaker = std::function<void(const char* block, std::streamsize size)>;
  [[nodiscard]] FileContent Read(const std::filesystem::path& file, const BlockTaker& take);

  Progress& progress_;
  Sha256 sha256_;
  std::unique_ptr<char[]> block_;
};

}  // namespace patcher::publisher
