#include "platform/files.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

#include "platform/linux/file_descriptor.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

int MoveByCopy(const fs::path& source, const fs::path& target) {
  fs::path beside = target;
  beside += ".part";
  if (beside == source) return EXDEV;
  int error = CopyOver(source, beside);
  if (error == 0 && rename(beside.c_str(), target.c_str()) != 0) error = errno;
  std::error_code ignored;
  fs::remove(error != 0 ? beside : source, ignored);
  return error;
}

}  // namespace

ExclusiveWrite ProbeExclusiveWrite(const fs::path& file) {
  const FileDescriptor probe(file, O_WRONLY | O_NONBLOCK);
  if (probe.Get() >= 0) return ExclusiveWrite::kPossible;
  switch (errno) {
    case EACCES:
    case EPERM:
    case EROFS:
    case EISDIR:
      return ExclusiveWrite::kRefused;
    default:
      return ExclusiveWrite::kUnknown;
  }
}

int MoveReplacing(const fs::path& source, const fs::path& target, bool copyAcrossVolumes) {
  if (rename(source.c_str(), target.c_str()) == 0) return 0;
  const int error = errno;
  return error == EXDEV && copyAcrossVolumes ? MoveByCopy(source, target) : error;
}

int CopyOver(const fs::path& source, const fs::path& target) {
  std::error_code error;
  fs::copy_file(source, target, fs::copy_options::overwrite_existing, error);
  return error.value();
}

int FlushToDisk(const fs::path& file) {
  const FileDescriptor opened(file, O_RDONLY);
  if (opened.Get() < 0 || fsync(opened.Get()) != 0) return errno;
  return 0;
}

int FlushDirectory(const fs::path& directory) { return FlushToDisk(directory); }

fs::path ResolveLinks(const fs::path& file) {
  std::error_code error;
  fs::path target = fs::canonical(file, error);
  return error ? file : target;
}

}  // namespace platform
