#include "update/program_file.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "update/file_bytes.h"

namespace patcher {
namespace {

constexpr std::size_t kDosHeaderSize = 64;
constexpr std::size_t kPeOffset = 60;
constexpr std::size_t kPeHeaderSize = 24;
constexpr std::uint32_t kPeSignature = 0x00004550;  // "PE", 0, 0
constexpr std::uint16_t kOptionalMagic32 = 0x10B;
constexpr std::uint16_t kOptionalMagic64 = 0x20B;
constexpr std::size_t kCertificateEntry = 4;  // of the data directories
constexpr std::size_t kDirectoryEntrySize = 8;
constexpr std::size_t kPeSectionSize = 40;
constexpr std::uint64_t kPeSymbolSize = 18;

/// A part without bytes may have any offset.
bool IsInside(const FileBytes& file, std::uint64_t offset, std::uint64_t size) {
  return size == 0 || file.Contains(offset, size);
}

/// The names of the symbols follow the symbols. Their size is in their first four bytes and includes these.
bool SymbolsAreInside(FileBytes& file, Bytes header) {
  const std::uint64_t symbols = U32(header, 12);
  if (symbols == 0) return true;
  const std::uint64_t names = symbols + kPeSymbolSize * U32(header, 16);
  const auto size = file.Read(names, 4);
  return size && IsInside(file, names, U32(*size, 0));
}

/// Checks the headers and the certificates, the only data directory whose address is an offset in the file.
bool OptionalHeaderIsInside(FileBytes& file, Bytes optional) {
  if (optional.size() < 2) return false;
  const std::uint16_t magic = U16(optional, 0);
  if (magic != kOptionalMagic32 && magic != kOptionalMagic64) return false;
  const std::size_t directories = magic == kOptionalMagic32 ? 96 : 112;
  if (optional.size() < directories || !file.Contains(0, U32(optional, 60))) return false;
  const std::size_t certificates = directories + kCertificateEntry * kDirectoryEntrySize;
  if (U32(optional, directories - 4) <= kCertificateEntry) return true;
  return optional.size() >= certificates + kDirectoryEntrySize &&
         IsInside(file, U32(optional, certificates), U32(optional, certificates + 4));
}

bool IsCompletePe(FileBytes& file) {
  const auto dos = file.Read(0, kDosHeaderSize);
  if (!dos) return false;
  const std::uint64_t begin = U32(*dos, kPeOffset);
  const auto header = file.Read(begin, kPeHeaderSize);
  if (!header || U32(*header, 0) != kPeSignature || !SymbolsAreInside(file, *header)) return false;
  const std::size_t optionalSize = U16(*header, 20);
  const auto optional = file.Read(begin + kPeHeaderSize, optionalSize);
  if (!optional || !OptionalHeaderIsInside(file, *optional)) return false;
  const std::size_t count = U16(*header, 6);
  const auto sections = file.Read(begin + kPeHeaderSize + optionalSize, count * kPeSectionSize);
  if (!sections) return false;
  for (std::size_t at = 0; at < sections->size(); at += kPeSectionSize) {
    if (!IsInside(file, U32(*sections, at + 20), U32(*sections, at + 16))) return false;
  }
  return true;
}

/// The offsets of fields in the ELF header and in the entries of a table.
struct ElfTable {
  std::size_t offsetField;     // in the header: offset of the table
  std::size_t entrySizeField;  // in the header, two bytes; the number of entries follows
  std::size_t minEntrySize;
  std::size_t contentOffset;  // in an entry
  std::size_t contentSize;
};

struct ElfLayout {
  std::size_t headerSize;
  std::size_t word;  // bytes of an offset or size
  ElfTable segments;
  ElfTable sections;
};

constexpr ElfLayout kElf32{52, 4, {28, 42, 32, 4, 16}, {32, 46, 40, 16, 20}};
constexpr ElfLayout kElf64{64, 8, {32, 54, 56, 8, 32}, {40, 58, 64, 24, 32}};
constexpr std::size_t kElfIdentSize = 16;
constexpr std::uint8_t kElfLittleEndian = 1;
constexpr std::size_t kSectionType = 4;  // in an entry
constexpr std::uint32_t kNoSection = 0;
constexpr std::uint32_t kSectionWithoutBytes = 8;

bool TableIsInside(FileBytes& file, Bytes header, const ElfTable& table, std::size_t word, bool sections) {
  const std::size_t entrySize = U16(header, table.entrySizeField);
  const std::size_t count = U16(header, table.entrySizeField + 2);
  if (count == 0) return true;
  if (entrySize < table.minEntrySize) return false;
  const std::uint64_t begin = LittleEndian(header, table.offsetField, word);
  if (!file.Contains(begin, entrySize * count)) return false;
  for (std::size_t i = 0; i < count; ++i) {
    const auto entry = file.Read(begin + i * entrySize, table.minEntrySize);
    if (!entry) return false;
    const std::uint32_t type = U32(*entry, kSectionType);
    if (sections && (type == kNoSection || type == kSectionWithoutBytes)) continue;
    if (!IsInside(file, LittleEndian(*entry, table.contentOffset, word),
                  LittleEndian(*entry, table.contentSize, word))) {
      return false;
    }
  }
  return true;
}

bool IsCompleteElf(FileBytes& file) {
  const auto ident = file.Read(0, kElfIdentSize);
  if (!ident || (*ident)[5] != kElfLittleEndian || ((*ident)[4] != 1 && (*ident)[4] != 2)) return false;
  const ElfLayout& layout = (*ident)[4] == 1 ? kElf32 : kElf64;
  const auto header = file.Read(0, layout.headerSize);
  return header && TableIsInside(file, *header, layout.segments, layout.word, false) &&
         TableIsInside(file, *header, layout.sections, layout.word, true);
}

enum class Format { kPe, kElf, kOther };

Format FormatOf(FileBytes& file) {
  const auto two = file.Read(0, 2);
  const auto four = file.Read(0, 4);
  if (two && (*two)[0] == 'M' && (*two)[1] == 'Z') return Format::kPe;
  return four && U32(*four, 0) == 0x464C457F ? Format::kElf : Format::kOther;
}

}  // namespace

ProgramFile ExamineProgram(const std::filesystem::path& place) {
  FileBytes file(place);
  bool complete = false;
  switch (FormatOf(file)) {
    case Format::kPe:
      complete = IsCompletePe(file);
      break;
    case Format::kElf:
      complete = IsCompleteElf(file);
      break;
    case Format::kOther:
      return ProgramFile::kNone;
  }
  return complete ? ProgramFile::kComplete : ProgramFile::kIncomplete;
}

bool HaveSameFormat(const std::filesystem::path& a, const std::filesystem::path& b) {
  FileBytes first(a);
  FileBytes second(b);
  return FormatOf(first) == FormatOf(second);
}

}  // namespace patcher
