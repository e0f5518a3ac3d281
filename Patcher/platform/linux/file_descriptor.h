#pragma once

#include <filesystem>

#include <fcntl.h>
#include <unistd.h>

namespace platform {

/// An open file or directory, closed when this goes; Get() is negative, with the reason in errno, if it could
/// not be opened.
class FileDescriptor {
 public:
  /// `mode` is that of a file which the flags let it create.
  FileDescriptor(const std::filesystem::path& file, int flags, mode_t mode = 0)
      : descriptor_(open(file.c_str(), flags | O_CLOEXEC, mode)) {}
  ~FileDescriptor() {
    if (descriptor_ >= 0) close(descriptor_);
  }
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  int Get() const { return descriptor_; }

 private:
  int descriptor_;
};

}  // namespace platform
