#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>

namespace platform {

/// Reads a file once, from its beginning to its end. Other programs may read, write, move and delete it at
/// the same time. Used by one thread.
class FileReader {
 public:
  explicit FileReader(const std::filesystem::path& file);
  ~FileReader();
  FileReader(const FileReader&) = delete;
  FileReader& operator=(const FileReader&) = delete;

  /// The file's size in bytes when it was opened. Nothing if it could not be opened or is not a regular file;
  /// Read then reads nothing.
  std::optional<std::uint64_t> Size() const { return size_; }

  /// Why the file could not be opened, as the system's error number; 0 if it was.
  int OpenError() const { return openError_; }

  /// Reads up to `size` bytes into `block`; fewer only at the end of the file. The end is the size at
  /// opening, or the present end if the file has become shorter. Returns false after a read error. `count` is
  /// always the number of bytes read.
  [[nodiscard]] bool Read(char* block, std::size_t size, std::size_t& count);

 private:
  std::intptr_t handle_;  // the system's
  int openError_ = 0;
  std::optional<std::uint64_t> size_;
  std::uint64_t read_ = 0;
};

}  // namespace platform
