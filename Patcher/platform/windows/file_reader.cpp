#include <windows.h>

#include "platform/file_reader.h"

#include <algorithm>

#include "platform/windows/owned_handle.h"

namespace platform {
namespace {

HANDLE Handle(std::intptr_t handle) { return reinterpret_cast<HANDLE>(handle); }

}  // namespace

FileReader::FileReader(const std::filesystem::path& file)
    : handle_(
          reinterpret_cast<std::intptr_t>(CreateFileW(file.c_str(), GENERIC_READ, kShareAll, nullptr,
                                                      OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr))) {
  if (Handle(handle_) == INVALID_HANDLE_VALUE) openError_ = static_cast<int>(GetLastError());
  LARGE_INTEGER size{};
  if (Handle(handle_) != INVALID_HANDLE_VALUE && GetFileType(Handle(handle_)) == FILE_TYPE_DISK &&
      GetFileSizeEx(Handle(handle_), &size)) {
    size_ = static_cast<std::uint64_t>(size.QuadPart);
  }
}

FileReader::~FileReader() {
  if (Handle(handle_) != INVALID_HANDLE_VALUE) CloseHandle(Handle(handle_));
}

bool FileReader::Read(char* block, std::size_t size, std::size_t& count) {
  const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(size, size_.value_or(0) - read_));
  count = 0;
  while (count < wanted) {
    constexpr std::size_t kMost = std::size_t{1} << 30;
    DWORD got = 0;
    const auto part = static_cast<DWORD>(std::min(wanted - count, kMost));
    if (!ReadFile(Handle(handle_), block + count, part, &got, nullptr)) return false;
    if (got == 0) return true;
    count += got;
    read_ += got;
  }
  return true;
}

}  // namespace platform
