#include "platform/links.h"

#include <cerrno>

#include <sys/stat.h>

namespace platform {

bool IsLink(const std::filesystem::path& entry) {
  struct stat status {};
  if (lstat(entry.c_str(), &status) == 0) return S_ISLNK(status.st_mode);
  return errno != ENOENT && errno != ENOTDIR;
}

}  // namespace platform
