#include "prune.h"

#include <string>
#include <system_error>
#include <unordered_set>
#include <vector>

#include "history.h"
#include "platform/text.h"

namespace patcher {
namespace {

namespace fs = std::filesystem;

using Names = std::unordered_set<std::string>;

void AddNames(const Publication& publication, Names& used) {
  for (const PatchFile& file : publication.manifest.files) used.insert(file.url);
  for (const PublishedArchive& archive : publication.archives) used.insert(archive.bundle.name);
  used.insert(publication.manifest.patcherUrl);
}

class Deleter {
 public:
  Deleter(const ContentStore& store, const Names& used) : store_(store), used_(used) {}

  /// Deletes the unused contents below a folder of the store.
  void Sweep(const char* folder) {
    std::vector<fs::path> unused;
    std::error_code error;
    for (fs::recursive_directory_iterator entry(store_.Root() / folder, error), end; !error && entry != end;
         entry.increment(error)) {
      if (!entry->is_regular_file(error)) continue;
      const fs::path name = entry->path().lexically_relative(store_.Root());
      const std::u8string generic = name.generic_u8string();
      if (used_.count(std::string(generic.begin(), generic.end())) == 0) unused.push_back(entry->path());
    }
    for (const fs::path& file : unused) Delete(file);
  }

  void Delete(const fs::path& file) {
    std::error_code error;
    const std::uint64_t size = fs::file_size(file, error);
    if (error || !fs::remove(file, error) || error) return;
    ++result_.files;
    result_.bytes += size;
  }

  PruneResult Result() const { return result_; }

 private:
  const ContentStore& store_;
  const Names& used_;
  PruneResult result_;
};

}  // namespace

PruneResult Prune(const ContentStore& store, const Publication& current, std::size_t keep) {
  const std::int32_t version = current.manifest.version;
  Names used;
  AddNames(current, used);
  std::size_t kept = 1;
  std::vector<std::int32_t> dropped;
  for (const std::int32_t other : PublishedVersions(store)) {
    if (other == version) continue;
    if (kept == keep) {
      dropped.push_back(other);
      continue;
    }
    ++kept;
    const auto publication = ReadPublication(HistoryFile(store, other));
    if (publication) AddNames(*publication, used);
  }
  Deleter deleter(store, used);
  // The copies first: none of those that stay may name a content that is gone.
  for (const std::int32_t other : dropped) deleter.Delete(HistoryFile(store, other));
  for (const char* folder : {"files", "archives", "launcher"}) deleter.Sweep(folder);
  return deleter.Result();
}

}  // namespace patcher
