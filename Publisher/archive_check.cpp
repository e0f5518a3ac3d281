#include "archive_check.h"

#include <array>
#include <string_view>
#include <unordered_map>

#include <miniz.h>

#include "platform/text.h"
#include "update/archive_directory.h"

namespace patcher::publisher {
namespace {

namespace fs = std::filesystem;

constexpr mz_uint kMaxNameSize = 1024;

/// An open ZIP reader.
class Reader {
 public:
  explicit Reader(const fs::path& archive) {
    mz_zip_zero_struct(&zip_);
    open_ = ArchiveDirectoryIsSound(archive) &&
            mz_zip_reader_init_file(&zip_, platform::Utf8FromPath(archive).c_str(), 0) != 0;
  }
  ~Reader() {
    if (open_) mz_zip_reader_end(&zip_);
  }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

  bool IsOpen() const { return open_; }
  mz_uint EntryCount() { return mz_zip_reader_get_num_files(&zip_); }

  std::string Name(mz_uint entry) {
    std::array<char, kMaxNameSize> name{};
    mz_zip_reader_get_filename(&zip_, entry, name.data(), kMaxNameSize);
    return name.data();
  }

  /// The digest of an entry's content; empty if it cannot be extracted.
  std::string Digest(mz_uint entry, FileHasher& hasher) {
    struct Target {
      FileHasher& hasher;
      platform::DigestHash hash;
    } target{hasher, hasher.Digests().BeginHash()};
    const auto feed = [](void* opaque, mz_uint64, const void* bytes, size_t size) {
      auto& [counter, hash] = *static_cast<Target*>(opaque);
      hash.Update(bytes, size);
      counter.Count(size);
      return size;
    };
    const bool extracted = mz_zip_reader_extract_to_callback(&zip_, entry, feed, &target, 0) != 0;
    std::string digest = hasher.Digests().FinishHex(target.hash);
    return extracted ? digest : std::string();
  }

 private:
  mz_zip_archive zip_;
  bool open_ = false;
};

}  // namespace

std::vector<std::string> ArchiveFindings(const fs::path& archive,
                                         const std::vector<const PatchFile*>& expected, FileHasher& hasher) {
  Reader reader(archive);
  if (!reader.IsOpen()) return {"is no readable ZIP archive"};
  std::vector<std::string> findings;
  std::unordered_map<std::string_view, const PatchFile*> missing;
  for (const PatchFile* file : expected) missing.emplace(file->path, file);
  for (mz_uint entry = 0; entry < reader.EntryCount(); ++entry) {
    const std::string name = reader.Name(entry);
    const auto file = missing.find(name);
    if (file == missing.end()) {
      findings.push_back("holds the entry " + name + ", which is not listed or is there twice");
      continue;
    }
    const std::string digest = reader.Digest(entry, hasher);
    if (digest.empty()) {
      findings.push_back("holds the entry " + name + ", which cannot be extracted");
    } else if (digest != file->second->sha256) {
      findings.push_back("holds the entry " + name + " with another content");
    }
    missing.erase(file);
  }
  for (const PatchFile* file : expected) {
    if (missing.count(file->path) != 0) findings.push_back("lacks the entry " + file->path);
  }
  return findings;
}

}  // namespace patcher::publisher
