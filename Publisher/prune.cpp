#include "prune.h"

#include <set>
#include <string>
#include <system_error>
#include <unordered_set>
#include <vector>

#include "live_manifest.h"
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

std::vector<fs::path> UnusedBelow(const ContentStore& store, const char* folder, const Names& used) {
  std::vector<fs::path> unused;
  std::error_code error;
  if (!fs::exists(store.Root() / folder, error) && !error) return unused;
  for (fs::recursive_directory_iterator entry(store.Root() / folder, error), end; !error && entry != end;
       entry.increment(error)) {
    if (!entry->is_regular_file(error)) continue;
    const fs::path name = entry->path().lexically_relative(store.Root());
    const std::u8string generic = name.generic_u8string();
    if (used.count(std::string(generic.begin(), generic.end())) == 0) unused.push_back(entry->path());
  }
  if (error) throw FileError("cannot list", store.Root() / folder, error);
  return unused;
}

/// The files that no kept version uses.
struct PrunePlan {
  std::vector<fs::path> copies;
  std::vector<fs::path> contents;
};

PrunePlan PlanPruning(const ContentStore& store, const Publication& live, std::optional<std::int32_t> before,
                      std::size_t keep) {
  const History history = ReadHistory(store);
  for (const PublishedVersion& version : history) {
    if (!version.problem.empty()) {
      throw PublishError("nothing is pruned, since the history cannot be read: " + version.problem);
    }
  }
  const Versions kept = KeptVersions(history, live.manifest.version, before, keep);
  PrunePlan plan;
  Names used;
  AddNames(live, used);
  for (const PublishedVersion& version : history) {
    if (kept.count(version.version) != 0) {
      AddNames(ReadCopy(store, version.version), used);
    } else {
      plan.copies.push_back(HistoryFile(store, version.version));
    }
  }
  for (const char* folder : ContentStore::kContentFolders) {
    for (fs::path& file : UnusedBelow(store, folder, used)) plan.contents.push_back(std::move(file));
  }
  return plan;
}

/// Deletes files. Continues after a failure; the next pruning deletes the remaining files.
class Deleter {
 public:
  /// Raises PublishError, at the end, if a file could not be deleted.
  void Delete(const std::vector<fs::path>& files) {
    std::string failure;
    for (const fs::path& file : files) {
      std::error_code error;
      const std::uint64_t size = fs::file_size(file, error);
      const int failed = RetryWhileHeld([&] {
        fs::remove(file, error);
        return error.value();
      });
      if (failed == 0) {
        ++result_.files;
        result_.bytes += size;
      } else if (failure.empty()) {
        failure = FileError("cannot delete", file, error).what();
      }
    }
    if (!failure.empty()) throw PublishError(failure);
  }

  PruneResult Result() const { return result_; }

 private:
  PruneResult result_;
};

}  // namespace

PruneResult Prune(const ContentStore& store, const Publication& live, std::optional<std::int32_t> before,
                  std::size_t keep) {
  const PrunePlan plan = PlanPruning(store, live, before, keep);
  Deleter deleter;
  // Copies first, so that no remaining copy names a missing content, even after a power cut.
  deleter.Delete(plan.copies);
  store.FlushFolder(store.HistoryFolder());
  deleter.Delete(plan.contents);
  return deleter.Result();
}

PruneResult ForecastPruning(const ContentStore& store, const Publication& live, std::size_t keep) {
  const PrunePlan plan = PlanPruning(store, live, std::nullopt, keep);
  PruneResult result;
  for (const auto* files : {&plan.copies, &plan.contents}) {
    for (const fs::path& file : *files) {
      std::error_code error;
      const std::uint64_t size = fs::file_size(file, error);
      ++result.files;
      if (!error) result.bytes += size;
    }
  }
  return result;
}

void ReportPruned(const PruneResult& result, Report& report) {
  report.Line("pruned " + Counted(result.files, "file") + ", " + ReadableBytes(result.bytes));
  report.Add("pruned", JsonAmount(result.files, result.bytes));
}

void PruneFolder(const fs::path& www, std::size_t keep, bool quiet, Report& report) {
  const ContentStore store(www);
  RequireStore(store);
  const StoreSession session(store);
  Progress progress(quiet);
  const auto live = ReadLive(store, ReadHistory(store), progress);
  if (!live) throw PublishError("nothing is live: nothing is pruned");
  ReportPruned(Prune(store, *live, std::nullopt, keep), report);
}

}  // namespace patcher::publisher
