#include "platform/batch_flush.h"

#include <map>
#include <set>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/linux/file_descriptor.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

bool FlushFileSystemOf(const fs::path& directory) {
  const FileDescriptor opened(directory, O_RDONLY | O_DIRECTORY);
  return opened.Get() >= 0 && syncfs(opened.Get()) == 0;
}

/// Flushes the directory's file system, unless an earlier directory was in the same one.
bool Flush(const fs::path& directory, std::set<dev_t>& flushed) {
  struct stat status {};
  if (stat(directory.c_str(), &status) != 0) return false;
  if (flushed.count(status.st_dev) != 0) return true;
  if (!FlushFileSystemOf(directory)) return false;
  flushed.insert(status.st_dev);
  return true;
}

}  // namespace

int StartFlush(const fs::path&) { return 0; }

std::vector<bool> FinishFlush(std::span<const fs::path> files) {
  // Opens the directories: the files may be unreadable, and many files share a directory.
  std::map<fs::path, bool> directories;
  std::set<dev_t> fileSystems;
  std::vector<bool> flushed;
  for (const fs::path& file : files) {
    const auto [directory, isNew] = directories.try_emplace(file.parent_path(), false);
    if (isNew) directory->second = Flush(directory->first, fileSystems);
    flushed.push_back(directory->second);
  }
  return flushed;
}

}  // namespace platform
