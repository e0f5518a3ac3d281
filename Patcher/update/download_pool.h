#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

#include "transport/http_session.h"
#include "update/progress_tracker.h"

namespace patcher {

/// A work item: takes the item's index and the worker's number (from 0); false stops the pool.
using WorkItem = std::function<bool(std::size_t index, unsigned worker)>;

/// Runs the items in order on up to `threads` workers (at least 1, never more than items) and waits for all
/// of them. After an item that returns false or raises, no new item is begun; those in progress run to their
/// end. True if there was no such item. If the system grants fewer threads, those there are do the work.
bool ParallelRun(std::size_t itemCount, int threads, const WorkItem& work);

/// A file or archive as the manifest describes it.
struct ExpectedFile {
  const std::string& digest;
  std::uint64_t size;
};

/// Bytes that a body may have above its size in the manifest. Generous, since the digest decides and sizes
/// may be wrong: this only ends a body that does not end by itself.
inline constexpr std::uint64_t kMaxExcess = std::uint64_t{256} << 20;

/// Downloads one file with up to three attempts, until it has the expected digest. On false `reason` says in
/// the player's words how the last attempt failed.
bool DownloadVerified(HttpSession& session, const std::string& path, const std::filesystem::path& destination,
                      const ExpectedFile& expected, ProgressTracker& tracker, std::string& reason);

}  // namespace patcher
