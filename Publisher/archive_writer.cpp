#include "archive_writer.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <string>

#include <miniz.h>

#include "archive_check.h"
#include "archive_packer.h"
#include "platform/text.h"
#include "publish_error.h"

namespace patcher::publisher {
namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kSampleSize = 65536;
constexpr std::uint64_t kMaxSamples = 64;

/// The ZIP library reads a file in blocks of this size.
constexpr std::uint64_t kBlockSize = MZ_ZIP_MAX_IO_BUF_SIZE;

/// A slow level, since a file is compressed once and downloaded by every player.
constexpr mz_uint kLevel = MZ_BEST_COMPRESSION;
constexpr mz_uint kStored = MZ_NO_COMPRESSION;

/// The size of a sample after fast compression.
std::size_t PackedSize(const std::vector<char>& sample) {
  std::vector<char> packed(sample.size() + 1024);
  const mz_uint flags = tdefl_create_comp_flags_from_zip_params(MZ_BEST_SPEED, -15, MZ_DEFAULT_STRATEGY);
  const std::size_t size = tdefl_compress_mem_to_mem(packed.data(), packed.size(), sample.data(),
                                                     sample.size(), static_cast<int>(flags));
  return size == 0 ? sample.size() : size;
}

/// Compresses samples from the whole file. A file that is already compressed or encrypted is stored, to save
/// players the time to unpack it.
bool IsWorthPacking(const fs::path& file, std::uint64_t size) {
  std::ifstream in(file, std::ios::binary);
  std::size_t plain = 0;
  std::size_t packed = 0;
  const std::uint64_t count = std::clamp<std::uint64_t>(size / kSampleSize, 1, kMaxSamples);
  const std::uint64_t distance = size / count;
  std::vector<char> sample(static_cast<std::size_t>(std::min(distance, kSampleSize)));
  for (std::uint64_t number = 0; number < count; ++number) {
    in.seekg(static_cast<std::streamoff>(number * distance));
    in.read(sample.data(), static_cast<std::streamsize>(sample.size()));
    if (!in) return true;
    plain += sample.size();
    packed += PackedSize(sample);
  }
  return packed < plain - plain / 32;
}

/// An open ZIP writer.
class Writer {
 public:
  Writer(const fs::path& archive, FileHasher& hasher) : archive_(archive), hasher_(hasher) {
    errno = 0;
    out_.open(archive, std::ios::binary | std::ios::trunc);
    if (!out_) throw FileError("cannot write", archive, StreamReason());
    mz_zip_zero_struct(&zip_);
    zip_.m_pWrite = Write;
    zip_.m_pNeeds_keepalive = BlockIsRead;
    zip_.m_pIO_opaque = this;
    Require(mz_zip_writer_init(&zip_, 0) != 0, archive_);
  }
  ~Writer() { mz_zip_writer_end(&zip_); }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;

  void Add(const std::string& name, const fs::path& file, std::uint64_t size) {
    uncounted_ = size;
    if (const auto entry = packer_.Pack(file, size)) {
      AddPacked(name, *entry, size);
    } else {
      const bool deflate = IsWorthPacking(file, size);
      countsWrites_ = !deflate;
      Require(mz_zip_writer_add_file(&zip_, name.c_str(), platform::Utf8FromPath(file).c_str(), nullptr, 0,
                                     deflate ? kLevel : kStored) != 0,
              file);
      countsWrites_ = false;
    }
    Count(uncounted_);
  }

  void Finish() {
    Require(mz_zip_writer_finalize_archive(&zip_) != 0, archive_);
    Require(mz_zip_writer_end(&zip_) != 0, archive_);
    errno = 0;
    out_.close();
    if (!out_) throw FileError("cannot write", archive_, StreamReason());
  }

 private:
  static size_t Write(void* self, mz_uint64 offset, const void* bytes, size_t size) {
    return static_cast<Writer*>(self)->Append(offset, static_cast<const char*>(bytes), size) ? size : 0;
  }

  /// The ZIP library calls this after each block that it has read.
  static mz_bool BlockIsRead(void* self) {
    static_cast<Writer*>(self)->Count(kBlockSize);
    return MZ_FALSE;
  }

  bool Append(std::uint64_t offset, const char* bytes, std::size_t size) {
    errno = 0;
    if (offset != end_) out_.seekp(static_cast<std::streamoff>(offset));
    out_.write(bytes, static_cast<std::streamsize>(size));
    end_ = offset + size;
    if (!out_ && !writeError_) writeError_ = StreamReason();
    if (countsWrites_) Count(size);
    return !writeError_;
  }

  void AddPacked(const std::string& name, const ArchivePacker::Entry& entry, std::uint64_t size) {
    const bool added =
        entry.deflated
            ? mz_zip_writer_add_mem_ex(&zip_, name.c_str(), entry.bytes.data(), entry.bytes.size(), nullptr,
                                       0, MZ_ZIP_FLAG_COMPRESSED_DATA, size, entry.checksum) != 0
            : mz_zip_writer_add_mem(&zip_, name.c_str(), entry.bytes.data(), entry.bytes.size(), kStored) !=
                  0;
    Require(added, archive_);
  }

  /// Counts bytes of the current entry, but never more than it has.
  void Count(std::uint64_t bytes) {
    const std::uint64_t counted = std::min(bytes, uncounted_);
    uncounted_ -= counted;
    hasher_.Count(counted);
  }

  void Require(bool success, const fs::path& place) {
    if (success) return;
    if (writeError_) throw FileError("cannot write", archive_, writeError_);
    throw PublishError("cannot pack " + platform::Utf8FromPath(place) + ": " +
                       mz_zip_get_error_string(mz_zip_get_last_error(&zip_)));
  }

  const fs::path archive_;
  FileHasher& hasher_;
  ArchivePacker packer_;
  std::ofstream out_;
  std::uint64_t end_ = 0;  ///< of the last write
  std::error_code writeError_;
  std::uint64_t uncounted_ = 0;  ///< bytes of the current entry that are not counted yet
  bool countsWrites_ = false;    ///< true: count bytes when they are written (stored entries)
  mz_zip_archive zip_;
};

}  // namespace

void WriteArchive(const fs::path& archive, const ContentStore& store,
                  const std::vector<const PatchFile*>& files, FileHasher& hasher) {
  Writer writer(archive, hasher);
  for (const PatchFile* file : files) writer.Add(file->path, store.Place(file->url), file->size);
  writer.Finish();
}

PatchBundle StoreArchive(const fs::path& archive, const ContentStore& store,
                         const std::vector<const PatchFile*>& files, std::int32_t since, FileHasher& hasher) {
  // Launchers do not hash extracted files, so only this check finds damaged content.
  const std::vector<std::string> findings = ArchiveFindings(archive, files, hasher);
  if (!findings.empty()) throw PublishError("a new archive " + findings.front());
  const FileContent content = hasher.Read(archive);
  PatchBundle bundle{ContentStore::ArchiveName(since, content.digest), content.size, content.digest, {}};
  for (const PatchFile* file : files) bundle.files.push_back(file->path);
  store.PutInPlace(archive, store.Place(bundle.name));
  return bundle;
}

}  // namespace patcher::publisher
