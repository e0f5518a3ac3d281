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

void AddStoredSizes(const fs::path& folder, std::unordered_set<std::uint64_t>& sizes) {
  std::error_code error;
  if (!fs::exists(folder, error) && !error) return;
  for (fs::recursive_directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    if (entry->is_regular_file(error)) sizes.insert(entry->file_size(error));
  }
  if (error) throw FileError("cannot list", folder, error);
}

}  // namespace

void RequireSpace(const ClientScan& scan, const ContentStore& store, Progress& progress) {
  std::unordered_set<std::uint64_t> stored;
  for (const char* folder : {"f", "files"}) AddStoredSizes(store.Root() / folder, stored);
  std::uint64_t certain = 0;  // one content of each new size
  std::uint64_t likely = 0;   // every file of a new size
  std::unordered_set<std::uint64_t> newSizes;
  for (const ClientFile& file : scan.files) {
    if (stored.count(file.size) != 0) continue;
    likely += file.size;
    if (newSizes.insert(file.size).second) certain += file.size;
  }
  std::error_code error;
  fs::path place = fs::absolute(store.Root(), error);
  while (!fs::exists(place, error) && place.has_relative_path()) place = place.parent_path();
  const std::uint64_t available = fs::space(place, error).available;
  if (error) throw FileError("cannot read the free space of", store.Root(), error);
  const std::string free = " of new contents, and " + ReadableBytes(available) + " are free for " +
                           platform::Utf8FromPath(store.Root());
  if (certain > available) throw PublishError("there is not enough space: " + ReadableBytes(certain) + free);
  if (likely > available / 2) {
    progress.Notice("the space may not be enough: " + ReadableBytes(likely) + free +
                    ", and archives need additional space");
  }
}

}  // namespace patcher::publisher
