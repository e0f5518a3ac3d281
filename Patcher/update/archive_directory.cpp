#include "update/archive_directory.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>

#include "update/file_bytes.h"

namespace patcher {
namespace {

constexpr std::uint32_t kEndSignature = 0x06054b50;
constexpr std::uint32_t kEnd64Signature = 0x06064b50;
constexpr std::uint32_t kEnd64LocatorSignature = 0x07064b50;
constexpr std::uint32_t kEntrySignature = 0x02014b50;
constexpr std::size_t kEndSize = 22;
constexpr std::size_t kEnd64Size = 56;
constexpr std::size_t kEnd64LocatorSize = 20;
constexpr std::size_t kEntrySize = 46;
constexpr std::size_t kLocalHeaderSize = 30;
constexpr std::uint64_t kMaxCommentSize = 0xFFFF;
constexpr std::uint16_t kZip64FieldId = 1;
constexpr std::uint32_t kIn64 = 0xFFFFFFFF;
/// Each extracting thread holds the directory in memory. Archives of game files have far smaller ones.
constexpr std::uint64_t kMaxDirectorySize = 64u << 20;
/// The best ratio that deflate can reach: 258 bytes in two bits.
constexpr std::uint64_t kMaxExpansion = 1032;

struct Directory {
  std::uint64_t offset = 0;
  std::uint64_t size = 0;
  std::uint64_t entries = 0;
  std::uint64_t end = 0;  ///< offset of the first end record
};

/// Replaces the values by those of the 64-bit end record, if there is one before the end record. False if it
/// is damaged.
bool ApplyEnd64(FileBytes& file, std::uint64_t endOffset, Directory& directory) {
  if (endOffset < kEnd64LocatorSize) return true;
  const auto locator = file.Read(endOffset - kEnd64LocatorSize, kEnd64LocatorSize);
  if (!locator || U32(*locator, 0) != kEnd64LocatorSignature) return locator.has_value();
  const std::uint64_t recordOffset = U64(*locator, 8);
  const auto record = file.Read(recordOffset, kEnd64Size);
  if (!record || U32(*record, 0) != kEnd64Signature || recordOffset + kEnd64Size > endOffset) return false;
  directory.entries = U64(*record, 32);
  directory.size = U64(*record, 40);
  directory.offset = U64(*record, 48);
  directory.end = recordOffset;
  return true;
}

std::optional<Directory> FindDirectory(FileBytes& file) {
  const std::uint64_t tailSize = std::min<std::uint64_t>(file.Size(), kEndSize + kMaxCommentSize);
  const auto tail = file.Read(file.Size() - tailSize, tailSize);
  if (!tail || tail->size() < kEndSize) return std::nullopt;
  // The ZIP reader uses the last signature, so this must too.
  for (std::size_t at = tail->size() - kEndSize + 1; at-- > 0;) {
    if (U32(*tail, at) != kEndSignature) continue;
    Directory directory;
    directory.entries = U16(*tail, at + 10);
    directory.size = U32(*tail, at + 12);
    directory.offset = U32(*tail, at + 16);
    directory.end = file.Size() - tailSize + at;
    if (!ApplyEnd64(file, directory.end, directory)) return std::nullopt;
    return directory;
  }
  return std::nullopt;
}

/// The sizes and the offset of an entry. An extra field has the values that do not fit into 32 bits.
struct EntryExtent {
  std::uint64_t unpackedSize;
  std::uint64_t packedSize;
  std::uint64_t localOffset;
};

bool ApplyExtra64(Bytes extra, EntryExtent& extent) {
  // Some writers add padding that is shorter than the header of a field.
  while (extra.size() >= 4) {
    const std::uint16_t id = U16(extra, 0);
    const std::size_t size = U16(extra, 2);
    if (size > extra.size() - 4) return false;
    Bytes field = extra.subspan(4, size);
    if (id == kZip64FieldId) {
      for (std::uint64_t* value : {&extent.unpackedSize, &extent.packedSize, &extent.localOffset}) {
        if (*value != kIn64) continue;
        if (field.size() < 8) return false;
        *value = U64(field, 0);
        field = field.subspan(8);
      }
      return true;
    }
    extra = extra.subspan(4 + size);
  }
  return true;
}

/// The size of the entry at the start of `bytes`, or nothing if it is not sound.
std::optional<std::size_t> CheckEntry(Bytes bytes, std::uint64_t directoryOffset) {
  if (bytes.size() < kEntrySize || U32(bytes, 0) != kEntrySignature) return std::nullopt;
  const std::size_t nameSize = U16(bytes, 28);
  const std::size_t extraSize = U16(bytes, 30);
  const std::size_t commentSize = U16(bytes, 32);
  const std::size_t size = kEntrySize + nameSize + extraSize + commentSize;
  if (size > bytes.size()) return std::nullopt;
  if (std::memchr(bytes.data() + kEntrySize, 0, nameSize) != nullptr) return std::nullopt;
  EntryExtent extent{U32(bytes, 24), U32(bytes, 20), U32(bytes, 42)};
  if (!ApplyExtra64(bytes.subspan(kEntrySize + nameSize, extraSize), extent)) return std::nullopt;
  if (directoryOffset < kLocalHeaderSize || extent.localOffset > directoryOffset - kLocalHeaderSize) {
    return std::nullopt;
  }
  if (extent.packedSize > directoryOffset - kLocalHeaderSize - extent.localOffset) return std::nullopt;
  // With some broken code tables the ZIP reader reads nothing and writes zeros up to this size.
  if (extent.unpackedSize / kMaxExpansion > extent.packedSize) return std::nullopt;
  return size;
}

}  // namespace

bool ArchiveDirectoryIsSound(const std::filesystem::path& archive) {
  FileBytes file(archive);
  const std::optional<Directory> directory = FindDirectory(file);
  if (!directory || directory->size > kMaxDirectorySize) return false;
  if (directory->offset > directory->end || directory->size > directory->end - directory->offset)
    return false;
  if (directory->entries > directory->size / kEntrySize) return false;
  const auto content = file.Read(directory->offset, directory->size);
  if (!content) return false;
  Bytes rest = *content;
  for (std::uint64_t i = 0; i < directory->entries; ++i) {
    const std::optional<std::size_t> size = CheckEntry(rest, directory->offset);
    if (!size) return false;
    rest = rest.subspan(*size);
  }
  return true;
}

}  // namespace patcher
