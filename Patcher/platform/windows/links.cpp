#include <windows.h>

#include "platform/links.h"

#include "platform/windows/owned_handle.h"

namespace platform {
namespace {

/// Other tags (for example of compressed or cloud files) do not redirect the path. Tag 0 is not a real tag
/// and counts as a link.
bool PointsElsewhere(DWORD tag) { return tag == 0 || IsReparseTagNameSurrogate(tag); }

}  // namespace

bool IsLink(const std::filesystem::path& entry) {
  const DWORD attributes = GetFileAttributesW(entry.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) {
    const DWORD error = GetLastError();
    return error != ERROR_FILE_NOT_FOUND && error != ERROR_PATH_NOT_FOUND && error != ERROR_INVALID_NAME;
  }
  if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) return false;
  const OwnedHandle opened(CreateFileW(entry.c_str(), FILE_READ_ATTRIBUTES, kShareAll, nullptr, OPEN_EXISTING,
                                       FILE_FLAG_OPEN_REPARSE_POINT | FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  FILE_ATTRIBUTE_TAG_INFO info{};
  if (!opened.IsOpen() ||
      !GetFileInformationByHandleEx(opened.Get(), FileAttributeTagInfo, &info, sizeof(info))) {
    return true;
  }
  return PointsElsewhere(info.ReparseTag);
}

}  // namespace platform
