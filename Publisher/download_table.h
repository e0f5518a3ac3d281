#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "content_store.h"
#include "history.h"
#include "manifest_document.h"
#include "report.h"

namespace patcher::publisher {

/// What the launcher downloads to update an installation to a publication.
struct DownloadCost {
  std::size_t files = 0;     ///< files that are missing or have other content
  std::size_t archives = 0;  ///< archives that it uses; 0 if single files need fewer bytes
  std::uint64_t bytes = 0;
  bool isEstimate = false;  ///< true: depends on an archive that is not packed yet
};

/// `installed` is the complete version that the player has, or null for a new player. An archive without a
/// digest is not packed yet.
[[nodiscard]] DownloadCost CostOfUpdate(const Publication& current, const PatchManifest* installed);

/// One line of the table.
struct DownloadRow {
  std::int32_t version = 0;  ///< version that the player has; 0: a new player
  DownloadCost cost;
};

/// Rows for a new player, and for players with one of the latest earlier versions that were live.
[[nodiscard]] std::vector<DownloadRow> DownloadRows(const ContentStore& store, const History& history,
                                                    const Publication& current);

/// The table as text: a line of headings and the rows, without the last line feed.
[[nodiscard]] std::string DownloadTable(const std::vector<DownloadRow>& rows);

/// The table as JSON: an array with an object for each row.
[[nodiscard]] MiniJson::Value JsonDownloads(const std::vector<DownloadRow>& rows);

}  // namespace patcher::publisher
