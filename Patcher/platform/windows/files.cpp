#include <windows.h>

#include "platform/files.h"

#include "platform/windows/owned_handle.h"

namespace platform {
namespace {

int LastErrorUnless(BOOL success) { return success ? 0 : static_cast<int>(GetLastError()); }

int Flush(const std::filesystem::path& entry, DWORD flags) {
  constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const OwnedHandle opened(
      CreateFileW(entry.c_str(), GENERIC_WRITE, kShareAll, nullptr, OPEN_EXISTING, flags, nullptr));
  return LastErrorUnless(opened.IsOpen() && FlushFileBuffers(opened.Get()));
}

/// The form in which players and the standard library know a path.
std::wstring WithoutLongPathPrefix(const std::wstring& path) {
  const std::wstring server = L"\\\\?\\UNC\\";
  const std::wstring local = L"\\\\?\\";
  if (path.starts_with(server)) return L"\\\\" + path.substr(server.size());
  return path.starts_with(local) ? path.substr(local.size()) : path;
}

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

int CopyOver(const std::filesystem::path& source, const std::filesystem::path& target) {
  return LastErrorUnless(CopyFileW(source.c_str(), target.c_str(), FALSE));
}

int FlushToDisk(const std::filesystem::path& file) { return Flush(file, FILE_ATTRIBUTE_NORMAL); }

int FlushDirectory(const std::filesystem::path& directory) {
  return Flush(directory, FILE_FLAG_BACKUP_SEMANTICS);
}

std::filesystem::path ResolveLinks(const std::filesystem::path& file) {
  const DWORD attributes = GetFileAttributesW(file.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) return file;
  constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const OwnedHandle opened(CreateFileW(file.c_str(), 0, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr));
  if (!opened.IsOpen()) return file;
  std::wstring name(GetFinalPathNameByHandleW(opened.Get(), nullptr, 0, 0), L'\0');
  const DWORD size = GetFinalPathNameByHandleW(opened.Get(), name.data(), static_cast<DWORD>(name.size()), 0);
  if (size == 0 || size >= name.size()) return file;
  name.resize(size);
  return WithoutLongPathPrefix(name);
}

}  // namespace platform
