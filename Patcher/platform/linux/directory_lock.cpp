#include "platform/directory_lock.h"

#include <algorithm>
#include <cerrno>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>

#include "platform/linux/file_descriptor.h"

namespace platform {

/// Locks the directory itself.
struct DirectoryLock::Impl {
  explicit Impl(const std::filesystem::path& directory) : opened(directory, O_RDONLY | O_DIRECTORY) {}

  const FileDescriptor opened;
};

DirectoryLock::DirectoryLock(const std::filesystem::path& directory)
    : impl_(std::make_unique<Impl>(directory)) {}

DirectoryLock::~DirectoryLock() = default;

bool DirectoryLock::TakeWithin(std::chrono::milliseconds timeout) {
  // flock has no time limit.
  constexpr std::chrono::milliseconds kPause(100);
  const auto end = std::chrono::steady_clock::now() + timeout;
  while (flock(impl_->opened.Get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
    const auto now = std::chrono::steady_clock::now();
    if (now >= end) return false;
    std::this_thread::sleep_until(std::min(end, now + kPause));
  }
  return true;
}

}  // namespace platform
