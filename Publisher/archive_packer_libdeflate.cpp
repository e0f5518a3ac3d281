#include <cerrno>
#include <fstream>
#include <new>

#include <libdeflate.h>

#include "archive_packer.h"
#include "publish_error.h"

namespace patcher::publisher {
namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kLargestFile = 64u << 20;

/// A slow level, since a file is compressed once and downloaded by every player. Higher levels save 0.1 %
/// more and take 50 % longer (docs/performance.md).
constexpr int kLevel = 10;

/// A buffer that grows. New memory is not initialized, and the old content is lost.
class Buffer {
 public:
  char* Take(std::size_t size) {
    if (size > size_) {
      bytes_.reset();
      size_ = 0;
      bytes_ = std::make_unique_for_overwrite<char[]>(size);
      size_ = size;
    }
    return bytes_.get();
  }

 private:
  std::unique_ptr<char[]> bytes_;
  std::size_t size_ = 0;
};

struct CompressorDeleter {
  void operator()(libdeflate_compressor* compressor) const { libdeflate_free_compressor(compressor); }
};

}  // namespace

struct ArchivePacker::State {
  std::unique_ptr<libdeflate_compressor, CompressorDeleter> compressor{libdeflate_alloc_compressor(kLevel)};
  Buffer content;
  Buffer packed;
};

ArchivePacker::ArchivePacker() : state_(std::make_unique<State>()) {
  if (!state_->compressor) throw std::bad_alloc();
}
ArchivePacker::~ArchivePacker() = default;

std::optional<ArchivePacker::Entry> ArchivePacker::Pack(const fs::path& file, std::uint64_t size) {
  if (size > kLargestFile) return std::nullopt;
  const auto count = static_cast<std::size_t>(size);
  char* const content = state_->content.Take(count);
  errno = 0;
  std::ifstream in;
  in.rdbuf()->pubsetbuf(nullptr, 0);
  in.open(file, std::ios::binary);
  if (count > 0 && !in.read(content, static_cast<std::streamsize>(count))) {
    throw FileError("cannot read", file, StreamReason());
  }
  // If the result does not fit, compression saves too little to be worth the time that players need to unpack
  // it.
  const std::size_t room = count / 32 * 31;
  char* const packed = state_->packed.Take(room);
  const std::size_t packedSize =
      libdeflate_deflate_compress(state_->compressor.get(), content, count, packed, room);
  Entry entry;
  entry.deflated = packedSize != 0;
  entry.bytes =
      entry.deflated ? std::span<const char>(packed, packedSize) : std::span<const char>(content, count);
  entry.checksum = libdeflate_crc32(0, content, count);
  return entry;
}

}  // namespace patcher::publisher
