#include "platform/directory_lock.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace platform {

/// The directory itself carries the lock.
struct DirectoryLock::Impl {
  explicit Impl(const std::filesystem::path& directory)
      : descriptor(open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {}
  ~Impl() {
    if (descriptor >= 0) close(descriptor);
  }
  Impl(const Impl&) = delete;
  Impl& operator=(const Impl&) = delete;

  const int descriptor;
};

DirectoryLock::DirectoryLock(const std::filesystem::path& directory)
    : impl_(std::make_unique<Impl>(directory)) {}

DirectoryLock::~DirectoryLock() = default;

bool DirectoryLock::TryTake() {
  return flock(impl_->descriptor, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

void DirectoryLock::Take() {
  while (flock(impl_->descriptor, LOCK_EX) != 0 && errno == EINTR) {
  }
}

}  // namespace platform
