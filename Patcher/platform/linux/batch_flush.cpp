#include "platform/batch_flush.h"

#include <cerrno>
#include <set>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/linux/file_descriptor.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

int FlushFileSystemOf(const fs::path& directory) {
  const FileDescriptor opened(directory, O_RDONLY | O_DIRECTORY);
  return opened.Get() >= 0 && syncfs(opened.Get()) == 0 ? 0 : errno;
}

}  // namespace

int StartFlush(const fs::path&) { return 0; }

int FinishFlush(std::span<const fs::path> files) {
  // Opens the directories: the files may be unreadable, and many files share a directory.
  std::set<fs::path> directories;
  for (const fs::path& file : files) directories.insert(file.parent_path());
  std::set<dev_t> devices;
  for (const fs::path& directory : directories) {
    struct stat status {};
    if (stat(directory.c_str(), &status) != 0) return errno;
    if (devices.count(status.st_dev) != 0) continue;
    if (const int error = FlushFileSystemOf(directory); error != 0) return error;
    devices.insert(status.st_dev);
  }
  return 0;
}

}  // namespace platform
