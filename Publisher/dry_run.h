#pragma once

#include <cstdint>

#include "archive_forecast.h"
#include "content_store.h"
#include "history.h"
#include "manifest_document.h"
#include "report.h"

namespace patcher::publisher {

/// A publication that is planned but not carried out.
struct DryRun {
  const ContentStore& store;
  const History& history;
  const Publication* previous;  ///< the live version, or null
  const ArchiveLimits& limits;
  Publication next;                    ///< with files and launcher, without archives
  std::uint64_t newLauncherBytes = 0;  ///< 0 if the launcher is published already
};

/// Reports what the publication would change, what players would download, and what has to be uploaded. Reads
/// only. Raises PublishError if launchers would not accept the manifest.
void ReportDryRun(DryRun run, Report& report);

}  // namespace patcher::publisher
