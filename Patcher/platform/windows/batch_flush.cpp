#include <windows.h>

#include "platform/batch_flush.h"

#include "platform/files.h"

namespace platform {

int StartFlush(const std::filesystem::path& file) {
  const DWORD attributes = GetFileAttributesW(file.c_str());
  const bool readOnly = attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0;
  if (!readOnly) return FlushToDisk(file);
  // Flushing needs a handle with write access.
  SetFileAttributesW(file.c_str(), attributes & ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY));
  const int error = FlushToDisk(file);
  SetFileAttributesW(file.c_str(), attributes);
  return error;
}

std::vector<bool> FinishFlush(std::span<const std::filesystem::path> files) {
  return std::vector<bool>(files.size(), true);
}

}  // namespace platform
