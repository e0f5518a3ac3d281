#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>

namespace patcher::publisher {

/// Compresses files in memory, faster and better than the ZIP library. Works only in builds with libdeflate.
/// One thread only. Needs memory for twice the largest file that it has read.
class ArchivePacker {
 public:
  /// The data of an entry, valid until the next call.
  struct Entry {
    std::span<const char> bytes;
    bool deflated = false;       ///< false: `bytes` is the content itself
    std::uint32_t checksum = 0;  ///< CRC-32 of the content
  };

  ArchivePacker();
  ~ArchivePacker();
  ArchivePacker(const ArchivePacker&) = delete;
  ArchivePacker& operator=(const ArchivePacker&) = delete;

  /// Reads a file of `size` bytes, and compresses it if that saves more than 1/32. Nothing if the file is
  /// larger than 64 MiB or this build has no libdeflate. Raises PublishError.
  [[nodiscard]] std::optional<Entry> Pack(const std::filesystem::path& file, std::uint64_t size);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace patcher::publisher
