#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>

#include "content_store.h"
#include "history.h"
#include "manifest_document.h"
#include "report.h"

namespace patcher::publisher {

struct PruneResult {
  std::size_t files = 0;
  std::uint64_t bytes = 0;
};

/// Deletes contents, archives, launchers and manifest copies that no kept version uses. Kept are the live
/// one, then `before` (the version that was live before it, if this run has replaced it), then those that
/// were live last, `keep` in all; and each held version above the live one. Raises PublishError: before
/// anything is deleted if any copy in the history cannot be read, afterwards if some file could not be
/// deleted.
PruneResult Prune(const ContentStore& store, const Publication& live, std::optional<std::int32_t> before,
                  std::size_t keep);

/// What pruning would delete. Reads only.
PruneResult ForecastPruning(const ContentStore& store, const Publication& live, std::size_t keep);

/// Reports what was deleted.
void ReportPruned(const PruneResult& result, Report& report);

/// Prunes a web server's folder by itself. Raises PublishError.
void PruneFolder(const std::filesystem::path& www, std::size_t keep, bool quiet, Report& report);

}  // namespace patcher::publisher
