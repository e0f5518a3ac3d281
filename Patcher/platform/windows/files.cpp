#include <windows.h>

#include "platform/files.h"

#include "platform/windows/owned_handle.h"

namespace platform {
namespace {

int LastErrorUnless(BOOL success) { return success ? 0 : static_cast<int>(GetLastError()); }

}  // namespace

ExclusiveWrite ProbeExclusiveWrite(const std::filesystem::path& file) {
  const OwnedHandle probe(
      CreateFileW(file.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (probe.IsOpen()) return ExclusiveWrite::kPossible;
  const DWORD error = GetLastError();
  const bool refused = error == ERROR_SHARING_VIOLATION || error == ERROR_ACCESS_DENIED;
  return refused ? ExclusiveWrite::kRefused : ExclusiveWrite::kUnknown;
}

int MoveReplacing(const std::filesystem::path& source, const std::filesystem::path& target,
                  bool copyAcrossVolumes) {
  const DWORD flags = MOVEFILE_REPLACE_EXISTING | (copyAcrossVolumes ? MOVEFILE_COPY_ALLOWED : 0u);
  return LastErrorUnless(MoveFileExW(source.c_str(), target.c_str(), flags));
}

int FlushToDisk(const std::filesystem::path& file) {
  const OwnedHandle opened(CreateFileW(file.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                       nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  return LastErrorUnless(opened.IsOpen() && FlushFileBuffers(opened.Get()));
}

}  // namespace platform
