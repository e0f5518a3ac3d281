#include "update/archive_reader.h"

#include <array>

#include "platform/text.h"

namespace patcher {

ArchiveReader::ArchiveReader(const std::filesystem::path& archive) {
  mz_zip_zero_struct(&zip_);
  // No entry is looked up by name, and sorting takes ten times as long as reading.
  isOpen_ = mz_zip_reader_init_file(&zip_, platform::Utf8FromPath(archive).c_str(),
                                    MZ_ZIP_FLAG_DO_NOT_SORT_CENTRAL_DIRECTORY) != 0;
}

ArchiveReader::~ArchiveReader() {
  if (isOpen_) mz_zip_reader_end(&zip_);
}

std::uint32_t ArchiveReader::EntryCount() { return mz_zip_reader_get_num_files(&zip_); }

bool ArchiveReader::IsDirectory(std::uint32_t entry) {
  return mz_zip_reader_is_file_a_directory(&zip_, entry) != 0;
}

std::string ArchiveReader::Name(std::uint32_t entry) {
  std::array<char, 1024> name{};
  mz_zip_reader_get_filename(&zip_, entry, name.data(), static_cast<mz_uint>(name.size()));
  return name.data();
}

std::uint64_t ArchiveReader::UnpackedSize(std::uint32_t entry) {
  mz_zip_archive_file_stat stat;
  return mz_zip_reader_file_stat(&zip_, entry, &stat) != 0 ? stat.m_uncomp_size : 0;
}

bool ArchiveReader::Extract(std::uint32_t entry, const std::filesystem::path& place) {
  return mz_zip_reader_extract_to_file(&zip_, entry, platform::Utf8FromPath(place).c_str(), 0) != 0;
}

bool ArchiveReader::Read(std::uint32_t entry,
                         const std::function<void(const void* bytes, std::size_t size)>& take) {
  const auto feed = [](void* opaque, mz_uint64, const void* bytes, std::size_t size) {
    (*static_cast<const std::function<void(const void*, std::size_t)>*>(opaque))(bytes, size);
    return size;
  };
  // miniz only passes the pointer on to `feed`.
  void* const opaque = const_cast<void*>(static_cast<const void*>(&take));
  return mz_zip_reader_extract_to_callback(&zip_, entry, feed, opaque, 0) != 0;
}

}  // namespace patcher
