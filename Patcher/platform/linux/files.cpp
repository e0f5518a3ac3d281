#include "platform/files.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/linux/file_descriptor.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

bool WriteAt(int descriptor, std::string_view bytes, std::uint64_t offset) {
  while (!bytes.empty()) {
    const ssize_t written = pwrite(descriptor, bytes.data(), bytes.size(), static_cast<off_t>(offset));
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(written));
    offset += static_cast<std::uint64_t>(written);
  }
  return true;
}

bool SetSize(int descriptor, std::uint64_t size) {
  return ftruncate(descriptor, static_cast<off_t>(size)) == 0;
}

int WriteFlushed(const fs::path& file, int flags, mode_t mode, std::string_view content) {
  const FileDescriptor created(file, O_WRONLY | O_CREAT | flags, mode);
  if (created.Get() < 0) return errno;
  errno = 0;
  if (WriteAt(created.Get(), content, 0) && fsync(created.Get()) == 0) return 0;
  const int error = errno != 0 ? errno : EIO;
  unlink(file.c_str());
  return error;
}

int MoveByCopy(const fs::path& source, const fs::path& target) {
  fs::path part = target;
  part += ".part";
  if (part == source) return EXDEV;
  int error = CopyOver(source, part);
  if (error == 0 && rename(part.c_str(), target.c_str()) != 0) error = errno;
  std::error_code ignored;
  fs::remove(error != 0 ? part : source, ignored);
  return error;
}

}  // namespace

ExclusiveWrite ProbeExclusiveWrite(const fs::path& file) {
  const FileDescriptor probe(file, O_WRONLY | O_NONBLOCK);
  if (probe.Get() >= 0) return ExclusiveWrite::kPossible;
  // A rename replaces every file, even a running program or a read-only one, but no directory.
  return errno == EISDIR ? ExclusiveWrite::kRefused : ExclusiveWrite::kUnknown;
}

bool CanBeWritten(const fs::path& file) { return FileDescriptor(file, O_WRONLY | O_NONBLOCK).Get() >= 0; }

int MoveReplacing(const fs::path& source, const fs::path& target, bool copyAcrossVolumes) {
  if (rename(source.c_str(), target.c_str()) == 0) return 0;
  const int error = errno;
  return error == EXDEV && copyAcrossVolumes ? MoveByCopy(source, target) : error;
}

bool IsHeldForAMoment(int) { return false; }

int MoveDurably(const fs::path& source, const fs::path& target) {
  const int error = MoveReplacing(source, target, true);
  // Some file systems cannot flush a directory.
  if (error == 0) static_cast<void>(FlushDirectory(target.parent_path()));
  return error;
}

void RemoveBeforeWriting(const fs::path& place) { unlink(place.c_str()); }

int MoveAside(const fs::path& file, const fs::path& newName) {
  if (link(file.c_str(), newName.c_str()) != 0) return MoveDurably(file, newName);
  // As above.
  static_cast<void>(FlushDirectory(newName.parent_path()));
  return 0;
}

int CopyOver(const fs::path& source, const fs::path& target) {
  std::error_code error;
  fs::copy_file(source, target, fs::copy_options::overwrite_existing, error);
  return error.value();
}

int TakeOverOwner(const fs::path& from, const fs::path& to) {
  constexpr mode_t kPermissions = 07777;
  const FileDescriptor opened(to, O_RDONLY | O_NOFOLLOW);
  struct stat wanted {};
  struct stat present {};
  if (opened.Get() < 0 || stat(from.c_str(), &wanted) != 0 || fstat(opened.Get(), &present) != 0)
    return errno;
  const bool sameOwner = wanted.st_uid == present.st_uid && wanted.st_gid == present.st_gid;
  if (!sameOwner && fchown(opened.Get(), wanted.st_uid, wanted.st_gid) != 0) return errno;
  const bool sameMode = ((wanted.st_mode ^ present.st_mode) & kPermissions) == 0;
  return sameMode || fchmod(opened.Get(), wanted.st_mode & kPermissions) == 0 ? 0 : errno;
}

Overwriting OverwriteInPlace(const fs::path& file, std::string_view content) {
  const FileDescriptor opened(file, O_WRONLY);
  struct stat before {};
  if (opened.Get() < 0 || fstat(opened.Get(), &before) != 0) return Overwriting::kUntouched;
  const auto oldSize = static_cast<std::uint64_t>(before.st_size);
  const std::string_view head = content.substr(0, std::min<std::uint64_t>(oldSize, content.size()));
  const std::string_view tail = content.substr(head.size());
  // The steps that can fail come first, while the old content can still be restored.
  if (!tail.empty() && (!WriteAt(opened.Get(), tail, oldSize) || fsync(opened.Get()) != 0)) {
    return SetSize(opened.Get(), oldSize) ? Overwriting::kUntouched : Overwriting::kTorn;
  }
  if (tail.empty() && !SetSize(opened.Get(), content.size())) return Overwriting::kUntouched;
  const bool done = WriteAt(opened.Get(), head, 0) && fsync(opened.Get()) == 0;
  return done ? Overwriting::kDone : Overwriting::kTorn;
}

int WriteWholeFile(const fs::path& file, std::string_view content) {
  return WriteFlushed(file, O_TRUNC, 0666, content);
}

int CreatePrivateFile(const fs::path& file, std::string_view content) {
  const int error = WriteFlushed(file, O_EXCL, S_IRUSR | S_IWUSR, content);
  // Some file systems cannot flush a directory.
  if (error == 0) static_cast<void>(FlushDirectory(fs::absolute(file).parent_path()));
  return error;
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
