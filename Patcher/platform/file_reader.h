#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>

namespace platform {

/// A file that is read once, from its beginning to its end. Others may read, write, move and delete it
/// meanwhile. One thread.
class FileReader {
 public:
  explicit FileReader(const std::filesystem::path& file);
  ~FileReader();
  FileReader(const FileReader&) = delete;
  FileReader& operator=(const FileReader&) = delete;

  /// The file's size in bytes when it was opened. Nothing if it could not be opened or is no regular file:
  /// such an object reads nothing.
  std::optional<std::uint64_t> Size() const { return size_; }

  /// Why the file could not be opened, as the system's error number; 0 if it was.
  int OpenError() const { return openError_; }

  /// Reads the next bytes into `block`: as many as fit, or fewer at the end, which is where it was when the
  /// file was opened, or earlier if the file has become shorter. False if the system could not read on;
  /// `count` says in every case how many bytes arrived.
  [[nodiscard]] bool Read(char* block, std::size_t size, std::size_t& count);

 private:
  std::intptr_t handle_;  // the system's
  int openError_ = 0;
  std::optional<std::uint64_t> size_;
  std::uint64_t read_ = 0;
};

}  // namespace platform
