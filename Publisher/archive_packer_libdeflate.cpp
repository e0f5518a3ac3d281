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

/// Packed once and fetched by every player: time spent here is well spent. The levels above save a thousandth
/// more and take half as long again (docs/performance.md).
constexpr int kLevel = 10;

/// Room that grows without being filled.
class Room {
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
  Room content;
  Room packed;
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
  // What does not fit into the room does not save enough: a player's machine need not unpack it.
  const std::size_t room = count / 32 * 31;
  char* const packed = state_->packed.Take(room);
  const std::size_t packedSize =
      libdeflate_deflate_compress(state_->compressor.get(), content, count, packed, room);
  Entry entry;
  entry.deflated = packedSize != 0;
  entry.bytes =
      entry.deflated ? std::span<const char>(packed, packedSize) : std::span<const char>(content, count);
  entry.crc32 = libdeflate_crc32(0, content, count);
  return entry;
}

}  // namespace patcher::publisher
