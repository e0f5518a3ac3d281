#pragma once

#include <cstdint>
#include <filesystem>

#include "report.h"
#include "signing.h"

namespace patcher::publisher {

struct GoLiveRequest {
  std::filesystem::path www;
  std::int32_t version = 0;
  bool allowOlderLauncher = false;  ///< announce the version's own launcher, not the newest
  SigningRequest signing;
  std::size_t keep = 0;  ///< versions that pruning keeps; 0: no pruning
  bool quiet = false;
};

/// Puts a published version before players: one that was held, or an earlier one. Proves its files, archives
/// and launcher first. The manifest is replaced in one step. Raises PublishError; LaterStepError if
/// the version is live all the same.
void GoLive(const GoLiveRequest& request, Report& report);

}  // namespace patcher::publisher
