#include "client_contents.h"

#include <functional>
#include <string>
#include <system_error>

#include "all_cores.h"
#include "file_hasher.h"
#include "publish_error.h"

namespace patcher::publisher {
namespace {

namespace fs = std::filesystem;

using TakeFile = std::function<std::string(const ClientFile& file, std::size_t index, FileHasher& hasher)>;

/// Calls `take` for each file, which returns its digest. `readings` is how often each file is read.
std::vector<PatchFile> ForEachFile(const ClientScan& scan, std::uint64_t readings, ContentNames& names,
                                   Progress& progress, const TakeFile& take) {
  std::vector<std::uint64_t> sizes;
  for (const ClientFile& file : scan.files) sizes.push_back(readings * file.size);
  std::vector<PatchFile> files(scan.files.size());
  const char* const stage = readings == 1 ? "hashing" : "hashing and verifying";
  RunOnAllCores(stage, sizes, progress, [&](std::size_t index, FileHasher& hasher) {
    const ClientFile& file = scan.files[index];
    const std::string digest = take(file, index, hasher);
    files[index] = {file.path, file.size, digest, names.NameOf(digest)};
  });
  return files;
}

void RequireSize(const ClientFile& file, const FileContent& content) {
  if (content.size != file.size) throw PublishError(file.path + " changed while it was being published");
}

class ContentWriter {
 public:
  ContentWriter(const ContentStore& store, ContentNames& names, VerifiedContents& verified,
                Progress& progress)
      : store_(store), names_(names), verified_(verified), progress_(progress) {
    std::error_code error;
    const fs::path& root = store_.Root();
    hasContents_ = !fs::is_empty(root / "f", error) || fs::exists(root / "files", error);
  }

  /// How often a client's file is read: once, and once more as its stored content or for its copy.
  std::uint64_t Readings() const { return hasContents_ ? 2 : 1; }

  /// Returns the digest. If the store has contents, most files are unchanged, so the file is first only read
  /// and hashed. Otherwise one pass reads, copies and hashes it.
  std::string Store(const ClientFile& file, std::size_t index, FileHasher& hasher) {
    const fs::path copy = store_.WorkFile(std::to_string(index));
    if (hasContents_) {
      const FileContent content = hasher.Read(file.place);
      RequireSize(file, content);
      if (IsSound(content, hasher) || LinkOldName(content, copy, hasher)) return content.digest;
    }
    const FileContent content = hasher.Copy(file.place, copy);
    RequireSize(file, content);
    const std::string name = names_.NameOf(content.digest);
    std::error_code error;
    const bool present = fs::exists(store_.Place(name), error);
    if (IsSound(content, hasher)) {
      fs::remove(copy, error);
      return content.digest;
    }
    if (present) progress_.Notice(name + " was damaged and is written again, from " + file.path);
    store_.PutInPlace(copy, store_.Place(name));
    verified_.MarkSound(name);
    return content.digest;
  }

 private:
  bool IsSound(const FileContent& content, FileHasher& hasher) {
    return verified_.IsSound(names_.NameOf(content.digest), content.size, content.digest, hasher);
  }

  /// Gives a content that an earlier release has stored its new name, without a second copy if the file
  /// system has hard links.
  bool LinkOldName(const FileContent& content, const fs::path& link, FileHasher& hasher) {
    const std::string name = names_.NameOf(content.digest);
    const std::string oldName = ContentStore::OldFileName(content.digest);
    std::error_code error;
    if (fs::exists(store_.Place(name), error) ||
        !verified_.IsSound(oldName, content.size, content.digest, hasher)) {
      return false;
    }
    fs::create_hard_link(store_.Place(oldName), link, error);
    if (error) return false;
    store_.PutInPlace(link, store_.Place(name));
    verified_.MarkSound(name);
    return true;
  }

  const ContentStore& store_;
  ContentNames& names_;
  VerifiedContents& verified_;
  Progress& progress_;
  bool hasContents_ = false;
};

}  // namespace

std::vector<PatchFile> StoreContents(const ClientScan& scan, const ContentStore& store, ContentNames& names,
                                     VerifiedContents& verified, Progress& progress) {
  ContentWriter writer(store, names, verified, progress);
  return ForEachFile(scan, writer.Readings(), names, progress,
                     [&](const ClientFile& file, std::size_t index, FileHasher& hasher) {
                       return writer.Store(file, index, hasher);
                     });
}

std::vector<PatchFile> HashContents(const ClientScan& scan, ContentNames& names, Progress& progress) {
  return ForEachFile(scan, 1, names, progress, [](const ClientFile& file, std::size_t, FileHasher& hasher) {
    const FileContent content = hasher.Read(file.place);
    RequireSize(file, content);
    return content.digest;
  });
}

}  // namespace patcher::publisher
