#include "platform/file_reader.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

// Without O_NONBLOCK, opening a pipe would wait for a writer. Regular files ignore the flag.
FileReader::FileReader(const std::filesystem::path& file)
    : handle_(open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
  if (handle_ < 0) openError_ = errno;
  struct stat status {};
  if (handle_ >= 0 && fstat(static_cast<int>(handle_), &status) == 0 && S_ISREG(status.st_mode)) {
    size_ = static_cast<std::uint64_t>(status.st_size);
  }
}

FileReader::~FileReader() {
  if (handle_ >= 0) close(static_cast<int>(handle_));
}

bool FileReader::Read(char* block, std::size_t size, std::size_t& count) {
  const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(size, size_.value_or(0) - read_));
  count = 0;
  while (count < wanted) {
    const ssize_t got = read(static_cast<int>(handle_), block + count, wanted - count);
    if (got == 0) return true;
    if (got > 0) {
      count += static_cast<std::size_t>(got);
      read_ += static_cast<std::uint64_t>(got);
    } else if (errno != EINTR) {
      return false;
    }
  }
  return true;
}

}  // namespace platform
