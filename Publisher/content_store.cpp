#include "content_store.h"

#include <cerrno>
#include <fstream>
#include <random>
#include <system_error>

#include "platform/files.h"
#include "platform/text.h"
#include "publish_error.h"
#include "shared/retry_while_held.h"

namespace patcher::publisher {
namespace {

namespace fs = std::filesystem;

constexpr char kWorkFolder[] = ".publish";
/// Hexadecimal digits in the names of contents and archives: 64 bits.
constexpr std::size_t kDigits = 16;

constexpr fs::perms kReadable = fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read;
constexpr fs::perms kSearchable = fs::perms::owner_exec | fs::perms::group_exec | fs::perms::others_exec;
constexpr fs::perms kServedFile = kReadable | fs::perms::owner_write;
constexpr fs::perms kServedFolder = kServedFile | kSearchable;

void SetPermissions(const fs::path& place, fs::perms permissions) {
  std::error_code error;
  fs::permissions(place, permissions, error);
  if (error) throw FileError("cannot set the permissions of", place, error);
}

void AddPermissions(const fs::path& place, fs::perms wanted) {
  std::error_code error;
  const fs::perms present = fs::status(place, error).permissions();
  if (!error && (present & wanted) != wanted) SetPermissions(place, present | wanted);
}

/// Makes a folder, and its missing parent folders.
void MakeFolder(const fs::path& folder) {
  std::error_code error;
  if (fs::is_directory(folder, error)) return;
  if (folder.has_relative_path() && folder.has_parent_path()) MakeFolder(folder.parent_path());
  if (fs::create_directory(folder, error)) return SetPermissions(folder, kServedFolder);
  if (error) throw FileError("cannot make", folder, error);
}

void MakeServedFolder(const fs::path& folder) {
  MakeFolder(folder);
  AddPermissions(folder, kReadable | kSearchable);
}

/// A random name, since machines may share a folder without locks, and process numbers of two machines may be
/// equal.
std::string NameOfThisProcess() {
  std::random_device random;
  return std::to_string(random()) + "-" + std::to_string(random());
}

bool HasNoSuchCall(const std::error_code& reason) {
  return reason == std::errc::invalid_argument || reason == std::errc::function_not_supported ||
         reason == std::errc::operation_not_supported;
}

}  // namespace

ContentStore::ContentStore(const fs::path& www)
    : root_(www / "patch"), work_(root_ / kWorkFolder / NameOfThisProcess()) {}

std::string ContentStore::FileName(const std::string& digest) {
  return LongFileName(digest.substr(0, kDigits));
}
std::string ContentStore::LongFileName(const std::string& digest) {
  return "f/" + digest.substr(0, 2) + "/" + digest.substr(2);
}
std::string ContentStore::OldFileName(const std::string& digest) {
  return "files/" + digest.substr(0, 2) + "/" + digest;
}
std::string ContentStore::ArchiveName(std::int32_t since, const std::string& digest) {
  return "archives/v" + std::to_string(since) + "-" + digest.substr(0, kDigits) + ".zip";
}
std::string ContentStore::LauncherName(const std::string& digest) { return "launcher/" + digest + ".exe"; }

fs::path ContentStore::Place(std::string_view name) const { return root_ / platform::PathFromUtf8(name); }

bool ContentStore::Has(std::string_view name, std::uint64_t size) const {
  std::error_code error;
  const fs::path place = Place(name);
  return fs::is_regular_file(place, error) && fs::file_size(place, error) == size && !error;
}

void ContentStore::MakeReadable(std::string_view name) const {
  const fs::path place = Place(name);
  AddPermissions(place, kReadable);
  AddPermissions(place.parent_path(), kReadable | kSearchable);
}

void ContentStore::MakeRoot() const { MakeServedFolder(root_); }

void ContentStore::OpenForWriting() const {
  std::error_code ignored;
  fs::remove_all(root_ / kWorkFolder, ignored);
  for (const char* folder : {"f", "archives", "launcher", "history"}) MakeServedFolder(root_ / folder);
  MakeFolder(work_);
}

fs::path ContentStore::WorkFile(std::string_view key) const { return work_ / platform::PathFromUtf8(key); }

void ContentStore::PutInPlace(const fs::path& workFile, const fs::path& place) const {
  SetPermissions(workFile, kServedFile);
  if (const int error = platform::FlushToDisk(workFile); error != 0) {
    throw FileError("cannot flush", workFile, SystemReason(error));
  }
  MakeServedFolder(place.parent_path());
  const int error = RetryWhileHeld([&] { return platform::MoveReplacing(workFile, place, false); });
  if (error != 0) throw FileError("cannot move a file to", place, SystemReason(error));
}

void ContentStore::WriteDocument(const fs::path& place, std::string_view text) const {
  const fs::path unfinished = WorkFile("document");
  errno = 0;
  std::ofstream out(unfinished, std::ios::binary | std::ios::trunc);
  out.write(text.data(), static_cast<std::streamsize>(text.size()));
  out.close();
  if (!out) throw FileError("cannot write", unfinished, StreamReason());
  PutInPlace(unfinished, place);
}

void ContentStore::FlushFolder(const fs::path& folder) const {
  const int error = platform::FlushDirectory(folder);
  if (error != 0 && !HasNoSuchCall(SystemReason(error))) {
    throw FileError("cannot flush", folder, SystemReason(error));
  }
}

void ContentStore::FlushNames() const {
  std::error_code error;
  for (const char* name : kContentFolders) {
    const fs::path folder = root_ / name;
    if (!fs::exists(folder, error) && !error) continue;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
      if (entry->is_directory(error)) FlushFolder(entry->path());
    }
    if (error) throw FileError("cannot list", folder, error);
    FlushFolder(folder);
  }
  FlushFolder(root_);
}

void ContentStore::RemoveWorkFolder() const noexcept {
  std::error_code ignored;
  fs::remove_all(work_, ignored);
  fs::remove(root_ / kWorkFolder, ignored);
}

}  // namespace patcher::publisher
