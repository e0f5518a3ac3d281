#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

#include <miniz.h>

namespace patcher {

/// An open ZIP archive, for one thread. The caller has checked the file with ArchiveDirectoryIsSound. Entries
/// are numbered from 0, in the archive's order.
class ArchiveReader {
 public:
  explicit ArchiveReader(const std::filesystem::path& archive);
  ~ArchiveReader();
  ArchiveReader(const ArchiveReader&) = delete;
  ArchiveReader& operator=(const ArchiveReader&) = delete;

  bool IsOpen() const { return isOpen_; }
  std::uint32_t EntryCount();
  bool IsDirectory(std::uint32_t entry);
  /// Not checked: it may be empty, absolute, or lead out of any directory. Names of 1024 bytes or more are
  /// cut.
  std::string Name(std::uint32_t entry);
  /// In bytes; 0 if the entry cannot be read.
  std::uint64_t UnpackedSize(std::uint32_t entry);

  /// Writes an entry's content to a file, which it creates or replaces. False if the content is damaged or
  /// cannot be written; then the file may have a part of it.
  [[nodiscard]] bool Extract(std::uint32_t entry, const std::filesystem::path& place);
  /// Gives an entry's content to `take`, piece by piece. False if the content is damaged.
  [[nodiscard]] bool Read(std::uint32_t entry,
                          const std::function<void(const void* bytes, std::size_t size)>& take);

 private:
  mz_zip_archive zip_;
  bool isOpen_ = false;
};

}  // namespace patcher
