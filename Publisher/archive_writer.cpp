#include "archive_writer.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <string>

#include <miniz.h>

#include "archive_contents.h"
#include "platform/text.h"
#include "publish_error.h"

namespace patcher::publisher {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kSampleSize = 65536;

/// Packed once and fetched by every player: time spent here is well spent.
constexpr mz_uint kLevel = MZ_BEST_COMPRESSION;
constexpr mz_uint kStored = MZ_NO_COMPRESSION;

/// Bytes that quick packing makes of a sample, which is not changed by it.
std::size_t PackedSize(const std::vector<char>& sample) {
  std::vector<char> packed(sample.size() + 1024);
  const mz_uint flags = tdefl_create_comp_flags_from_zip_params(MZ_BEST_SPEED, -15, MZ_DEFAULT_STRATEGY);
  const std::size_t size = tdefl_compress_mem_to_mem(packed.data(), packed.size(), sample.data(),
                                                     sample.size(), static_cast<int>(flags));
  return size == 0 ? sample.size() : size;
}

/// Looks at the beginning, the middle and the end: what is already compressed or encrypted is stored, so that
/// the player's machine does not unpack it for nothing.
bool IsWorthPacking(const fs::path& file, std::uint64_t size) {
  std::ifstream in(file, std::ios::binary);
  std::size_t plain = 0;
  std::size_t packed = 0;
  const std::uint64_t sampleSize = std::min<std::uint64_t>(size, kSampleSize);
  for (const std::uint64_t offset : {std::uint64_t{0}, size / 2, size - sampleSize}) {
    std::vector<char> sample(static_cast<std::size_t>(std::min(sampleSize, size - offset)));
    in.seekg(static_cast<std::streamoff>(offset));
    in.read(sample.data(), static_cast<std::streamsize>(sample.size()));
    if (!in) return true;
    plain += sample.size();
    packed += PackedSize(sample);
    if (size <= kSampleSize) break;
  }
  return packed < plain - plain / 32;
}

/// An open ZIP writer.
class Writer {
 public:
  explicit Writer(const fs::path& archive) : archive_(archive) {
    mz_zip_zero_struct(&zip_);
    errno = 0;
    Require(mz_zip_writer_init_file(&zip_, platform::Utf8FromPath(archive).c_str(), 0) != 0);
  }
  ~Writer() { mz_zip_writer_end(&zip_); }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;

  void Add(const std::string& name, const fs::path& file, std::uint64_t size) {
    const mz_uint level = IsWorthPacking(file, size) ? kLevel : kStored;
    errno = 0;
    Require(mz_zip_writer_add_file(&zip_, name.c_str(), platform::Utf8FromPath(file).c_str(), nullptr, 0,
                                   level) != 0);
  }

  void Finish() {
    errno = 0;
    Require(mz_zip_writer_finalize_archive(&zip_) != 0);
    Require(mz_zip_writer_end(&zip_) != 0);
  }

 private:
  /// The library counts a full disk as a failed reading: the system knows better.
  void Require(bool success) {
    if (success) return;
    if (errno != 0) throw FileError("cannot write", archive_, StreamReason());
    throw PublishError("cannot write " + platform::Utf8FromPath(archive_) + ": " +
                       mz_zip_get_error_string(mz_zip_get_last_error(&zip_)));
  }

  const fs::path archive_;
  mz_zip_archive zip_;
};

}  // namespace

PatchBundle WriteArchive(const ContentStore& store, const std::vector<const PatchFile*>& files,
                         std::int32_t since, std::string_view workKey, FileHasher& hasher) {
  const fs::path unfinished = store.WorkFile(workKey);
  {
    Writer writer(unfinished);
    for (const PatchFile* file : files) {
      writer.Add(file->path, store.Place(file->url), file->size);
      hasher.Count(file->size);
    }
    writer.Finish();
  }
  // Players do not hash what they extract, so this is where a damaged content would slip through.
  const std::vector<std::string> findings = ArchiveFindings(unfinished, files, hasher.Digests());
  if (!findings.empty()) throw PublishError("a new archive " + findings.front());
  const FileContent content = hasher.ReadUncounted(unfinished);
  PatchBundle bundle{ContentStore::ArchiveName(since, content.digest), content.size, content.digest, {}};
  for (const PatchFile* file : files) bundle.files.push_back(file->path);
  store.PutInPlace(unfinished, store.Place(bundle.name));
  return bundle;
}

}  // namespace patcher::publisher
