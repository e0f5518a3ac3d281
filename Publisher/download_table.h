#pragma once

#include <cstdint>
#include <string>

#include "content_store.h"
#include "history.h"
#include "manifest_document.h"

namespace patcher::publisher {

/// What the launcher will fetch to bring an installation up to a publication.
struct DownloadCost {
  std::size_t files = 0;  ///< files that are missing or of another content
  std::uint64_t fileBytes = 0;
  std::size_t archives = 0;  ///< that it will use: none if single files cost fewer bytes
  std::uint64_t bytes = 0;
};

/// `installed` is the version that the player has completely, or null for an empty directory.
DownloadCost CostOfUpdate(const Publication& current, const PatchManifest* installed);

/// Lines of a table: a new player, and players of the newest earlier versions that were live.
std::string DownloadTable(const ContentStore& store, const History& history, const Publication& current);

}  // namespace patcher::publisher
