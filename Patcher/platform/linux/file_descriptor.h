#pragma once

#include <filesystem>

#include <fcntl.h>
#include <unistd.h>

namespace platform {

/// Owns an open file or directory. If it could not be opened, Get() is negative and errno has the reason.
class FileDescriptor {
 public:
  /// `mode` applies if `flags` lets open() create the file.
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
