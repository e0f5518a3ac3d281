#pragma once

#include <cstdint>
#include <filesystem>

#include "report.h"
#include "signing.h"

namespace patcher::publisher {

struct GoLiveRequest {
  std::filesystem::path www;
  std::int32_t version = 0;
  bool allowOlderLauncher = false;  ///< announce the version's own launcher, even if it is not the newest
  SigningRequest signing;
  std::size_t keep = 0;  ///< versions that pruning keeps; 0: no pruning
  bool quiet = false;
};

/// Makes a published version live: a held one or an earlier one. Verifies its files, archives and launcher
/// first. Replaces the manifest in one step. Raises PublishError, or LaterStepError if the version is live
/// but a later step failed.
void GoLive(const GoLiveRequest& request, Report& report);

}  // namespace patcher::publisher
