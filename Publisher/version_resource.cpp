#include "version_resource.h"

#include <cstddef>
#include <string_view>
#include <vector>

namespace patcher::publisher {
namespace {

/// The exception for bytes that are not a valid file.
struct Malformed {};

/// A range of bytes. Members raise Malformed instead of reading outside it.
class Bytes {
 public:
  Bytes() = default;
  explicit Bytes(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

  std::size_t Size() const { return bytes_.size(); }

  Bytes Part(std::size_t offset, std::size_t size) const {
    if (offset > Size() || size > Size() - offset) throw Malformed();
    return Bytes(bytes_.subspan(offset, size));
  }
  Bytes From(std::size_t offset) const {
    if (offset > Size()) throw Malformed();
    return Bytes(bytes_.subspan(offset));
  }
  std::uint16_t U16(std::size_t offset) const {
    const Bytes two = Part(offset, 2);
    return static_cast<std::uint16_t>(two.bytes_[0] | two.bytes_[1] << 8);
  }
  std::uint32_t U32(std::size_t offset) const { return U16(offset) | std::uint32_t{U16(offset + 2)} << 16; }

 private:
  std::span<const std::uint8_t> bytes_;
};

/// The sections of a PE file, by their addresses in memory.
class Image {
 public:
  explicit Image(Bytes file) {
    constexpr std::uint32_t kSignature = 0x00004550;  // "PE", 0, 0
    const Bytes header = file.From(file.U32(60));
    if (header.U32(0) != kSignature) throw Malformed();
    const Bytes optional = header.Part(24, header.U16(20));
    ReadDirectory(optional);
    const Bytes table = header.From(24 + optional.Size());
    for (std::size_t i = 0; i < header.U16(6); ++i) {
      const Bytes section = table.Part(i * 40, 40);
      const std::uint32_t size = section.U32(16);
      // A section without bytes may have any offset.
      if (size > 0) sections_.push_back({section.U32(12), file.Part(section.U32(20), size)});
    }
  }

  Bytes Resources() const { return At(resources_); }

  /// The bytes from an address to the end of its section.
  Bytes At(std::uint32_t address) const {
    for (const Section& section : sections_) {
      if (address >= section.address && address - section.address < section.content.Size()) {
        return section.content.From(address - section.address);
      }
    }
    throw Malformed();
  }

 private:
  struct Section {
    std::uint32_t address;
    Bytes content;
  };

  void ReadDirectory(Bytes optional) {
    constexpr std::uint16_t kMagic32 = 0x10B;
    constexpr std::uint16_t kMagic64 = 0x20B;
    constexpr std::uint32_t kResourceEntry = 2;
    const std::uint16_t magic = optional.U16(0);
    if (magic != kMagic32 && magic != kMagic64) throw Malformed();
    const std::size_t directories = magic == kMagic32 ? 96 : 112;
    if (optional.U32(directories - 4) <= kResourceEntry) throw Malformed();
    resources_ = optional.U32(directories + std::size_t{kResourceEntry} * 8);
  }

  std::vector<Section> sections_;
  std::uint32_t resources_ = 0;
};

constexpr std::uint32_t kHighBit = 0x80000000;

/// The offset in the entry with this number of the directory at `offset`. Without a number, in the first
/// entry.
std::uint32_t ResourceEntry(Bytes resources, std::uint32_t offset, std::optional<std::uint32_t> number) {
  const Bytes directory = resources.From(offset);
  const std::size_t count = std::size_t{directory.U16(12)} + directory.U16(14);
  for (std::size_t i = 0; i < count; ++i) {
    const Bytes entry = directory.Part(16 + i * 8, 8);
    if (!number || entry.U32(0) == *number) return entry.U32(4);
  }
  throw Malformed();
}

Bytes VersionResource(const Image& image) {
  constexpr std::uint32_t kVersionType = 16;  // RT_VERSION
  const Bytes resources = image.Resources();
  const std::uint32_t names = ResourceEntry(resources, 0, kVersionType);
  if ((names & kHighBit) == 0) throw Malformed();
  const std::uint32_t languages = ResourceEntry(resources, names & ~kHighBit, std::nullopt);
  if ((languages & kHighBit) == 0) throw Malformed();
  const std::uint32_t leaf = ResourceEntry(resources, languages & ~kHighBit, std::nullopt);
  const Bytes entry = resources.Part(leaf, 16);
  return image.At(entry.U32(0)).Part(0, entry.U32(4));
}

/// Reads UTF-16 text up to a zero or the end. Moves `offset` past the zero.
std::string Text(Bytes block, std::size_t& offset) {
  std::string text;
  while (offset + 2 <= block.Size()) {
    const std::uint16_t unit = block.U16(offset);
    offset += 2;
    if (unit == 0) break;
    text += unit < 128 ? static_cast<char>(unit) : '?';
  }
  return text;
}

constexpr std::size_t Aligned(std::size_t offset) { return (offset + 3) & ~std::size_t{3}; }

/// One block of a version resource. Blocks are nested, and each starts at a multiple of four bytes.
struct Block {
  explicit Block(Bytes bytes) : all(bytes.Part(0, bytes.U16(0))) {
    const bool isText = all.U16(4) == 1;
    valueSize = std::size_t{all.U16(2)} * (isText ? 2 : 1);
    std::size_t offset = 6;
    key = Text(all, offset);
    value = Aligned(offset);
  }

  /// The child block with this key, or the first one if `wanted` is empty.
  Block Child(std::string_view wanted) const {
    std::size_t offset = Aligned(value + valueSize);
    while (offset < all.Size()) {
      Block child(all.From(offset));
      if (wanted.empty() || child.key == wanted) return child;
      offset += Aligned(child.all.Size());
    }
    throw Malformed();
  }

  Bytes all;
  std::string key;
  std::size_t value = 0;  ///< offset of the value
  std::size_t valueSize = 0;
};

std::string InternalName(const Block& root) {
  try {
    const Block name = root.Child("StringFileInfo").Child({}).Child("InternalName");
    std::size_t offset = name.value;
    return Text(name.all, offset);
  } catch (const Malformed&) {
    return {};
  }
}

}  // namespace

std::optional<ProgramVersion> ReadProgramVersion(std::span<const std::uint8_t> program) {
  constexpr std::uint32_t kFixedSignature = 0xFEEF04BD;
  try {
    const Bytes file(program);
    if (file.U16(0) != 0x5A4D) return std::nullopt;  // "MZ"
    const Block root(VersionResource(Image(file)));
    const Bytes fixed = root.all.Part(root.value, root.valueSize);
    if (fixed.U32(0) != kFixedSignature) return std::nullopt;
    return ProgramVersion{{fixed.U16(10), fixed.U16(8), fixed.U16(14), fixed.U16(12)}, InternalName(root)};
  } catch (const Malformed&) {
    return std::nullopt;
  }
}

}  // namespace patcher::publisher
