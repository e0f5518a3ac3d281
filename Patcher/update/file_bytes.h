#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>
#include <span>
#include <system_error>
#include <vector>

namespace patcher {

using Bytes = std::span<const std::uint8_t>;

/// Reads a little-endian number of `size` bytes at `at`. The bytes must exist.
inline std::uint64_t LittleEndian(Bytes bytes, std::size_t at, std::size_t size) {
  std::uint64_t value = 0;
  for (std::size_t i = size; i-- > 0;) value = value << 8 | bytes[at + i];
  return value;
}

inline std::uint16_t U16(Bytes bytes, std::size_t at) {
  return static_cast<std::uint16_t>(LittleEndian(bytes, at, 2));
}
inline std::uint32_t U32(Bytes bytes, std::size_t at) {
  return static_cast<std::uint32_t>(LittleEndian(bytes, at, 4));
}
inline std::uint64_t U64(Bytes bytes, std::size_t at) { return LittleEndian(bytes, at, 8); }

/// Reads parts of a file, whose size must not change. One thread.
class FileBytes {
 public:
  /// A file that cannot be read counts as empty.
  explicit FileBytes(const std::filesystem::path& file) : stream_(file, std::ios::binary) {
    std::error_code error;
    const std::uint64_t size = std::filesystem::file_size(file, error);
    size_ = error ? 0 : size;
  }

  std::uint64_t Size() const { return size_; }

  bool Contains(std::uint64_t offset, std::uint64_t size) const {
    return offset <= size_ && size <= size_ - offset;
  }

  /// Nothing if the file does not have all these bytes, or if they cannot be read.
  std::optional<std::vector<std::uint8_t>> Read(std::uint64_t offset, std::uint64_t size) {
    if (!Contains(offset, size)) return std::nullopt;
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(size));
    stream_.seekg(static_cast<std::streamoff>(offset));
    stream_.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(size));
    if (!stream_) return std::nullopt;
    return bytes;
  }

 private:
  std::ifstream stream_;
  std::uint64_t size_ = 0;
};

}  // namespace patcher
