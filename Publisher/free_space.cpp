#include "free_space.h"

#include <cstdint>
#include <string>
#include <system_error>
#include <unordered_set>

#include "platform/text.h"
#include "publish_error.h"

namespace patcher::publisher {
namespace {

namespace fs = std::filesystem;

std::unordered_set<std::uint64_t> StoredSizes(const fs::path& folder) {
  std::unordered_set<std::uint64_t> sizes;
  std::error_code error;
  for (fs::recursive_directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    if (entry->is_regular_file(error)) sizes.insert(entry->file_size(error));
  }
  if (error) throw FileError("cannot list", folder, error);
  return sizes;
}

}  // namespace

void RequireSpace(const ClientScan& scan, const ContentStore& store, Progress& progress) {
  const std::unordered_set<std::uint64_t> stored = StoredSizes(store.Root() / "files");
  std::uint64_t needed = 0;
  for (const ClientFile& file : scan.files) {
    if (stored.count(file.size) == 0) needed += file.size;
  }
  std::error_code error;
  const std::uint64_t available = fs::space(store.Root(), error).available;
  if (error) throw FileError("cannot read the free space of", store.Root(), error);
  const std::string comparison = ReadableBytes(needed) + " of new contents, and " + ReadableBytes(available) +
                                 " are free for " + platform::Utf8FromPath(store.Root());
  if (needed > available) throw PublishError("there is not enough space: " + comparison);
  if (needed > available / 2) {
    progress.Notice("the space may not be enough: " + comparison + ", and archives come on top");
  }
}

}  // namespace patcher::publisher
