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

/// Deletes contents, archives, launchers and manifest copies that no kept version uses. Keeps `keep`
/// versions: the live one, then `before` (the version that this run has replaced, if any), then the versions
/// that were live last. Also keeps each held version above the live one. Raises PublishError: before it
/// deletes anything if a copy in the history cannot be read; at the end if a file could not be deleted.
[[nodiscard]] PruneResult Prune(const ContentStore& store, const Publication& live,
                                std::optional<std::int32_t> before, std::size_t keep);

/// Counts what pruning would delete. Reads only.
[[nodiscard]] PruneResult ForecastPruning(const ContentStore& store, const Publication& live,
                                          std::size_t keep);

/// Reports what was deleted.
void ReportPruned(const PruneResult& result, Report& report);

/// Prunes a web server's folder as a task of its own. Raises PublishError.
void PruneFolder(const std::filesystem::path& www, std::size_t keep, bool quiet, Report& report);

}  // namespace patcher::publisher
