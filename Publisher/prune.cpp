#include "prune.h"

#include <set>
#include <string>
#include <system_error>
#include <unordered_set>
#include <vector>

#include "live_manifest.h"
#include "platform/standard_streams.h"
#include "platform/text.h"
#include "progress_line.h"
#include "publish_error.h"
#include "shared/retry_while_held.h"
#include "store_session.h"

namespace patcher::publisher {
namespace {

namespace fs = std::filesystem;

using Names = std::unordered_set<std::string>;
using Versions = std::set<std::int32_t>;

void AddNames(const Publication& publication, Names& used) {
  for (const PatchFile& file : publication.manifest.files) used.insert(file.url);
  for (const PublishedArchive& archive : publication.archives) used.insert(archive.bundle.name);
  used.insert(publication.manifest.patcherUrl);
}

Versions KeptVersions(const History& history, std::int32_t live, std::optional<std::int32_t> before,
                      std::size_t keep) {
  Versions kept{live};
  if (before && kept.size() < keep) kept.insert(*before);
  for (const PublishedVersion* version : ByTime(history)) {
    if (kept.size() < keep) kept.insert(version->version);
  }
  for (const PublishedVersion& version : history) {
    if (version.held && version.version > live) kept.insert(version.version);
  }
  return kept;
}

class Deleter {
 public:
  explicit Deleter(const ContentStore& store) : store_(store) {}

  /// Deletes the unused contents below a folder of the store.
  void Sweep(const char* folder, const Names& used) {
    std::vector<fs::path> unused;
    std::error_code error;
    for (fs::recursive_directory_iterator entry(store_.Root() / folder, error), end; !error && entry != end;
         entry.increment(error)) {
      if (!entry->is_regular_file(error)) continue;
      const fs::path name = entry->path().lexically_relative(store_.Root());
      const std::u8string generic = name.generic_u8string();
      if (used.count(std::string(generic.begin(), generic.end())) == 0) unused.push_back(entry->path());
    }
    if (error) Fail(store_.Root() / folder, error);
    for (const fs::path& file : unused) Delete(file);
  }

  void Delete(const fs::path& file) {
    std::error_code error;
    const std::uint64_t size = fs::file_size(file, error);
    const int failure = RetryWhileHeld([&] {
      fs::remove(file, error);
      return error.value();
    });
    if (failure != 0) return Fail(file, error);
    ++result_.files;
    result_.bytes += size;
  }

  void RequireSuccess() const {
    if (!failure_.empty()) throw PublishError(failure_);
  }

  PruneResult Result() const { return result_; }

 private:
  /// Goes on with the others: what is left is deleted by the next pruning.
  void Fail(const fs::path& place, const std::error_code& error) {
    if (failure_.empty()) failure_ = FileError("cannot delete", place, error).what();
  }

  const ContentStore& store_;
  PruneResult result_;
  std::string failure_;
};

}  // namespace

PruneResult Prune(const ContentStore& store, const Publication& live, std::optional<std::int32_t> before,
                  std::size_t keep) {
  const History history = ReadHistory(store);
  for (const PublishedVersion& version : history) {
    if (!version.problem.empty()) {
      throw PublishError("nothing is pruned, since the history cannot be read: " + version.problem);
    }
  }
  const Versions kept = KeptVersions(history, live.manifest.version, before, keep);
  Names used;
  AddNames(live, used);
  Deleter deleter(store);
  std::vector<fs::path> dropped;
  for (const PublishedVersion& version : history) {
    if (kept.count(version.version) != 0) {
      AddNames(ReadCopy(store, version.version), used);
    } else {
      dropped.push_back(HistoryFile(store, version.version));
    }
  }
  // The copies first: none that stays may name a missing content, not even after a power cut.
  for (const fs::path& copy : dropped) deleter.Delete(copy);
  deleter.RequireSuccess();
  store.FlushFolder(store.HistoryFolder());
  for (const char* folder : {"files", "archives", "launcher"}) deleter.Sweep(folder, used);
  deleter.RequireSuccess();
  return deleter.Result();
}

std::string PruneText(const PruneResult& result) {
  return "pruned " + std::to_string(result.files) + " files, " + ReadableBytes(result.bytes);
}

void PruneFolder(const fs::path& www, std::size_t keep, bool quiet) {
  const ContentStore store(www);
  RequireStore(store);
  const StoreSession session(store);
  Progress progress(quiet);
  const auto live = ReadLive(store, ReadHistory(store), progress);
  if (!live) throw PublishError("nothing is live: nothing is pruned");
  const PruneResult pruned = Prune(store, *live, std::nullopt, keep);
  if (!quiet) platform::WriteLine(PruneText(pruned));
}

}  // namespace patcher::publisher
