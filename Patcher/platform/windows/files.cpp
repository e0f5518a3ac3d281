#include <windows.h>

#include "platform/files.h"

#include <algorithm>
#include <cstdint>
#include <system_error>

#include "platform/links.h"
#include "platform/windows/owned_handle.h"

namespace platform {
namespace {

int LastErrorUnless(BOOL success) { return success ? 0 : static_cast<int>(GetLastError()); }

int Flush(const std::filesystem::path& entry, DWORD flags) {
  const OwnedHandle opened(
      CreateFileW(entry.c_str(), GENERIC_WRITE, kShareAll, nullptr, OPEN_EXISTING, flags, nullptr));
  return LastErrorUnless(opened.IsOpen() && FlushFileBuffers(opened.Get()));
}

bool WriteAt(HANDLE file, std::string_view bytes, std::uint64_t offset) {
  OVERLAPPED place{};
  place.Offset = static_cast<DWORD>(offset);
  place.OffsetHigh = static_cast<DWORD>(offset >> 32);
  const auto size = static_cast<DWORD>(bytes.size());
  DWORD written = 0;
  return size == 0 || (WriteFile(file, bytes.data(), size, &written, &place) && written == size);
}

bool SetSize(HANDLE file, std::uint64_t size) {
  LARGE_INTEGER end{};
  end.QuadPart = static_cast<LONGLONG>(size);
  return SetFilePointerEx(file, end, nullptr, FILE_BEGIN) && SetEndOfFile(file);
}

int WriteFlushed(const std::filesystem::path& file, DWORD creation, std::string_view content) {
  int error = 0;
  {
    const OwnedHandle created(
        CreateFileW(file.c_str(), GENERIC_WRITE, 0, nullptr, creation, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!created.IsOpen()) return LastErrorUnless(FALSE);
    if (!WriteAt(created.Get(), content, 0) || !FlushFileBuffers(created.Get())) {
      error = static_cast<int>(GetLastError());
      // A write that the system cut short has no error of its own.
      if (error == 0) error = ERROR_DISK_FULL;
    }
  }
  if (error != 0) DeleteFileW(file.c_str());
  return error;
}

int Move(const std::filesystem::path& source, const std::filesystem::path& target, DWORD flags) {
  return LastErrorUnless(MoveFileExW(source.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING | flags));
}

/// The path without its "\\?\" prefix.
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

bool CanBeWritten(const std::filesystem::path& file) {
  return OwnedHandle(CreateFileW(file.c_str(), GENERIC_WRITE, kShareAll, nullptr, OPEN_EXISTING,
                                 FILE_ATTRIBUTE_NORMAL, nullptr))
      .IsOpen();
}

int MoveReplacing(const std::filesystem::path& source, const std::filesystem::path& target,
                  bool copyAcrossVolumes) {
  return Move(source, target, copyAcrossVolumes ? MOVEFILE_COPY_ALLOWED : 0u);
}

int MoveDurably(const std::filesystem::path& source, const std::filesystem::path& target) {
  return Move(source, target, MOVEFILE_COPY_ALLOWED | MOVEFILE_WRITE_THROUGH);
}

void RemoveBeforeWriting(const std::filesystem::path& place) {
  std::error_code ignored;
  if (IsLink(place)) std::filesystem::remove(place, ignored);
}

int MoveAside(const std::filesystem::path& file, const std::filesystem::path& newName) {
  return Move(file, newName, MOVEFILE_WRITE_THROUGH);
}

bool IsHeldForAMoment(int error) { return error == ERROR_ACCESS_DENIED || error == ERROR_SHARING_VIOLATION; }

int CopyOver(const std::filesystem::path& source, const std::filesystem::path& target) {
  return LastErrorUnless(CopyFileW(source.c_str(), target.c_str(), FALSE));
}

int TakeOverOwner(const std::filesystem::path&, const std::filesystem::path&) { return 0; }

Overwriting OverwriteInPlace(const std::filesystem::path& file, std::string_view content) {
  const OwnedHandle opened(CreateFileW(file.c_str(), GENERIC_WRITE, kShareAll, nullptr, OPEN_EXISTING,
                                       FILE_ATTRIBUTE_NORMAL, nullptr));
  LARGE_INTEGER before{};
  if (!opened.IsOpen() || !GetFileSizeEx(opened.Get(), &before)) return Overwriting::kUntouched;
  const auto oldSize = static_cast<std::uint64_t>(before.QuadPart);
  const std::string_view head =
      content.substr(0, static_cast<std::size_t>(std::min<std::uint64_t>(oldSize, content.size())));
  const std::string_view tail = content.substr(head.size());
  // The steps that can fail come first, while the old content can still be restored: the disk may be full,
  // and a file that a program has mapped into memory cannot be made shorter.
  if (!tail.empty() && (!WriteAt(opened.Get(), tail, oldSize) || !FlushFileBuffers(opened.Get()))) {
    return SetSize(opened.Get(), oldSize) ? Overwriting::kUntouched : Overwriting::kTorn;
  }
  if (tail.empty() && !SetSize(opened.Get(), content.size())) return Overwriting::kUntouched;
  const bool done = WriteAt(opened.Get(), head, 0) && FlushFileBuffers(opened.Get());
  return done ? Overwriting::kDone : Overwriting::kTorn;
}

int WriteWholeFile(const std::filesystem::path& file, std::string_view content) {
  return WriteFlushed(file, CREATE_ALWAYS, content);
}

int CreatePrivateFile(const std::filesystem::path& file, std::string_view content) {
  return WriteFlushed(file, CREATE_NEW, content);
}

int FlushToDisk(const std::filesystem::path& file) { return Flush(file, FILE_ATTRIBUTE_NORMAL); }

int FlushDirectory(const std::filesystem::path& directory) {
  return Flush(directory, FILE_FLAG_BACKUP_SEMANTICS);
}

std::filesystem::path ResolveLinks(const std::filesystem::path& file) {
  const DWORD attributes = GetFileAttributesW(file.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) return file;
  const OwnedHandle opened(CreateFileW(file.c_str(), 0, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr));
  if (!opened.IsOpen()) return file;
  std::wstring name(GetFinalPathNameByHandleW(opened.Get(), nullptr, 0, 0), L'\0');
  const DWORD size = GetFinalPathNameByHandleW(opened.Get(), name.data(), static_cast<DWORD>(name.size()), 0);
  if (size == 0 || size >= name.size()) return file;
  name.resize(size);
  return WithoutLongPathPrefix(name);
}

}  // namespace platform
