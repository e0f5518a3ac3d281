#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "content_store.h"
#include "history.h"
#include "manifest_document.h"
#include "report.h"

namespace patcher::publisher {

/// What the launcher will fetch to bring an installation up to a publication.
struct DownloadCost {
  std::size_t files = 0;     ///< files that are missing or of another content
  std::size_t archives = 0;  ///< that it will use: none if single files cost fewer bytes
  std::uint64_t bytes = 0;
  bool isEstimate = false;  ///< it depends on an archive that is not packed yet
};

/// `installed` is the version that the player has completely, or null for an empty directory. An archive
/// without a digest is not packed yet.
DownloadCost CostOfUpdate(const Publication& current, const PatchManifest* installed);

/// A line of the table.
struct DownloadRow {
  std::size_t behind = 0;    ///< versions that were live since the player's; 0: a new player
  std::int32_t version = 0;  ///< the player's; 0: a new player
  DownloadCost cost;
};

/// A new player, and players of the newest earlier versions that were live.
std::vector<DownloadRow> DownloadRows(const ContentStore& store, const History& history,
                                      const Publication& current);

/// The rows below a line of headings, without the last line feed.
std::string DownloadTable(const std::vector<DownloadRow>& rows);

/// An array with an object for each row.
MiniJson::Value JsonDownloads(const std::vector<DownloadRow>& rows);

}  // namespace patcher::publisher
