#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>

namespace patcher::publisher {

/// Deflates whole files in memory, in less time and into fewer bytes than the ZIP library does. Available in
/// builds with libdeflate. One thread only. Takes the memory of the largest file that it has read, twice.
class ArchivePacker {
 public:
  /// The bytes of an entry, valid until the next call.
  struct Entry {
    std::span<const char> bytes;
    bool deflated = false;  ///< otherwise these are the content itself
    std::uint32_t crc32 = 0;
  };

  ArchivePacker();
  ~ArchivePacker();
  ArchivePacker(const ArchivePacker&) = delete;
  ArchivePacker& operator=(const ArchivePacker&) = delete;

  /// Reads a file of `size` bytes; deflates it if that saves more than a 32nd. Nothing if the file is above
  /// 64 MiB or this build has no libdeflate. Raises PublishError.
  std::optional<Entry> Pack(const std::filesystem::path& file, std::uint64_t size);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace patcher::publisher
