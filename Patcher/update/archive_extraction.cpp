#include "update/archive_extraction.h"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <limits>
#include <system_error>
#include <thread>
#include <unordered_set>
#include <vector>

#include "platform/files.h"
#include "shared/program.h"
#include "transport/debug_log.h"
#include "transport/file_download.h"
#include "update/archive_directory.h"
#include "update/archive_reader.h"

namespace patcher {
namespace {

namespace fs = std::filesystem;

/// A batch ends with the entry that reaches this number of unpacked bytes.
constexpr std::uint64_t kBatchBytes = 1 << 20;

bool NameStaysInside(const std::string& name) {
  const bool absolute = name.front() == '/' || name.front() == '\\';
  const bool drive = name.size() > 1 && name[1] == ':';
  return !absolute && !drive && name.find("..") == std::string::npos;
}

/// A half-open range of wanted entries in one directory, which one thread extracts. Two threads that create
/// files in the same directory wait for each other, which takes longer than the extraction of a small file.
struct Batch {
  std::size_t begin;
  std::size_t end;
};

struct WantedEntries {
  std::vector<std::uint32_t> entries;  ///< in the archive's order
  std::vector<Batch> batches;          ///< of all entries, in order
  bool hasRepeatedNames = false;       ///< two entries have the same name
};

WantedEntries ListWanted(ArchiveReader& zip, const std::function<bool(std::string_view path)>& wanted) {
  WantedEntries list;
  std::unordered_set<std::string> names;
  std::string directory;  // of the last batch
  std::uint64_t bytes = 0;
  for (std::uint32_t entry = 0; entry < zip.EntryCount(); ++entry) {
    if (zip.IsDirectory(entry)) continue;
    std::string name = zip.Name(entry);
    if (name.empty() || !NameStaysInside(name) || !wanted(name)) continue;
    const std::size_t place = list.entries.size();
    list.entries.push_back(entry);
    const std::string_view parent = std::string_view(name).substr(0, name.rfind('/') + 1);
    if (list.batches.empty() || parent != directory || bytes >= kBatchBytes) {
      list.batches.push_back({place, place});
      directory = parent;
      bytes = 0;
    }
    list.batches.back().end = place + 1;
    bytes += zip.UnpackedSize(entry);
    list.hasRepeatedNames = list.hasRepeatedNames || !names.insert(std::move(name)).second;
  }
  return list;
}

/// Whether the entry would overwrite the running launcher, which a failed extraction would destroy. A single
/// file replaces it in one step. Compares the lengths of the names first, since asking the system about each
/// entry would take long.
bool IsLauncher(const fs::path& place) {
  return place.filename().native().size() == ExePath().filename().native().size() && IsOwnName(place);
}

bool ExtractEntry(ArchiveReader& zip, std::uint32_t entry) {
  try {
    const fs::path place = InstalledPlace(zip.Name(entry));
    if (IsLauncher(place)) return false;
    std::error_code ignored;
    fs::create_directories(place.parent_path(), ignored);
    platform::RemoveBeforeWriting(place);
    // If this fails, the extraction fails too.
    static_cast<void>(MoveLockedTargetAside(place));
    return zip.Extract(entry, place);
  } catch (const std::exception& failure) {
    DebugLog::WriteException("an extraction", failure);
    return false;
  }
}

/// The extraction of one archive. Its own thread runs it, and other threads may help.
class Extraction {
 public:
  Extraction(const fs::path& archive, const WantedEntries& wanted, ExtractingThreads& threads)
      : archive_(archive),
        wanted_(wanted),
        threads_(threads),
        // Two threads must not write the same file, and the later entry must win.
        canBeHelped_(!wanted.hasRepeatedNames) {}

  void Run(ArchiveReader& zip) {
    threads_.Join();
    do {
      InviteHelpers();
    } while (ExtractBatch(zip));
    for (std::thread& helper : helpers_) helper.join();
    threads_.Leave();
  }

  /// Called after Run. The first entry that failed, or null.
  const std::uint32_t* FirstFailure() const {
    return firstFailed_ != kNone ? &wanted_.entries[firstFailed_] : nullptr;
  }

 private:
  /// Called before each batch, since a thread becomes free when another archive ends.
  void InviteHelpers() {
    while (canBeHelped_ && nextBatch_ + helpers_.size() + 1 < wanted_.batches.size() && threads_.TryJoin()) {
      try {
        helpers_.emplace_back([this] { Help(); });
      } catch (const std::exception&) {
        // There are no more threads, or no memory for one.
        threads_.Leave();
        canBeHelped_ = false;
      }
    }
  }

  void Help() {
    try {
      ArchiveReader zip(archive_);
      // If a helper cannot open the archive, the other threads do the work.
      if (!zip.IsOpen()) canBeHelped_ = false;
      while (zip.IsOpen() && !threads_.AreTooMany() && ExtractBatch(zip)) {
      }
    } catch (const std::exception& failure) {
      DebugLog::WriteException("an extraction", failure);
      canBeHelped_ = false;
    }
    threads_.Leave();
  }

  /// False if there is no batch left or an entry has failed.
  bool ExtractBatch(ArchiveReader& zip) {
    if (firstFailed_ != kNone) return false;
    const std::size_t batch = nextBatch_++;
    if (batch >= wanted_.batches.size()) return false;
    // Batches start in order, and a thread skips only entries after a failed one. So all entries before it
    // are tried, as with a single thread.
    for (std::size_t i = wanted_.batches[batch].begin; i < wanted_.batches[batch].end && i < firstFailed_;
         ++i) {
      if (!ExtractEntry(zip, wanted_.entries[i])) ReportFailure(i);
    }
    return true;
  }

  void ReportFailure(std::size_t entry) {
    std::size_t first = firstFailed_;
    while (entry < first && !firstFailed_.compare_exchange_weak(first, entry)) {
    }
  }

  static constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();

  const fs::path& archive_;
  const WantedEntries& wanted_;
  ExtractingThreads& threads_;
  std::atomic<bool> canBeHelped_;
  std::atomic<std::size_t> nextBatch_{0};
  std::atomic<std::size_t> firstFailed_{kNone};  // index of a wanted entry
  std::vector<std::thread> helpers_;             // used only by the archive's own thread
};

}  // namespace

bool ExtractingThreads::TryJoin() {
  int count = count_;
  while (count < limit_) {
    if (count_.compare_exchange_weak(count, count + 1)) return true;
  }
  return false;
}

bool ExtractArchive(const fs::path& archive, const std::function<bool(std::string_view path)>& wanted,
                    ExtractingThreads& threads, std::string& failure) {
  failure = "archive illisible";
  if (!ArchiveDirectoryIsSound(archive)) return false;
  ArchiveReader zip(archive);
  if (!zip.IsOpen()) return false;
  const WantedEntries list = ListWanted(zip, wanted);
  Extraction extraction(archive, list, threads);
  extraction.Run(zip);
  failure = extraction.FirstFailure() != nullptr ? zip.Name(*extraction.FirstFailure()) : "";
  return extraction.FirstFailure() == nullptr;
}

}  // namespace patcher
