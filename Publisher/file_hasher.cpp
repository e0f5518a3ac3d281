#include "file_hasher.h"

#include <cerrno>
#include <fstream>

#include "publish_error.h"

namespace patcher::publisher {
namespace {

namespace fs = std::filesystem;

constexpr std::streamsize kBlockSize = 1048576;

}  // namespace

FileHasher::FileHasher(Progress& progress)
    : progress_(progress), block_(std::make_unique_for_overwrite<char[]>(kBlockSize)) {}

FileContent FileHasher::Read(const fs::path& file) {
  return Read(file, [](const char*, std::streamsize) {});
}

FileContent FileHasher::Copy(const fs::path& file, const fs::path& copy) {
  errno = 0;
  std::ofstream out(copy, std::ios::binary | std::ios::trunc);
  FileContent content = Read(file, [&](const char* block, std::streamsize size) {
    errno = 0;
    if (!out.write(block, size)) throw FileError("cannot write", copy, StreamReason());
  });
  errno = 0;
  out.close();
  if (!out) throw FileError("cannot write", copy, StreamReason());
  return content;
}

FileContent FileHasher::Read(const fs::path& file, const BlockTaker& take) {
  std::ifstream in;
  in.rdbuf()->pubsetbuf(nullptr, 0);
  errno = 0;
  in.open(file, std::ios::binary);
  if (!in) throw FileError("cannot open", file, StreamReason());
  platform::DigestHash hash = sha256_.BeginHash();
  FileContent content;
  while (in) {
    errno = 0;
    in.read(block_.get(), kBlockSize);
    if (in.bad()) throw FileError("cannot read", file, StreamReason());
    const std::streamsize count = in.gcount();
    if (count <= 0) break;
    hash.Update(block_.get(), static_cast<std::size_t>(count));
    take(block_.get(), count);
    Count(static_cast<std::uint64_t>(count));
    content.size += static_cast<std::uint64_t>(count);
  }
  content.digest = sha256_.FinishHex(hash);
  return content;
}

}  // namespace patcher::publisher
