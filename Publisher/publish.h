#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "archive_plan.h"
#include "report.h"
#include "signing.h"

namespace patcher::publisher {

/// A launcher that is published along with the game.
struct NewLauncher {
  std::filesystem::path file;
  std::optional<std::int32_t> build;  ///< as given by the publisher
};

struct PublishRequest {
  std::filesystem::path client;
  std::filesystem::path www;
  std::optional<std::int32_t> version;  ///< nothing: one above the highest version
  std::optional<NewLauncher> launcher;  ///< nothing: the newest published one stays
  bool allowOlderLauncher = false;
  bool hold = false;  ///< publish without going live: players keep their version
  SigningRequest signing;
  std::vector<std::string> excluded;
  ArchiveLimits limits;
  std::size_t keep = 0;  ///< versions that pruning keeps; 0: no pruning
  bool quiet = false;
  bool dryRun = false;  ///< only report what would happen
};

/// Publishes a client directory as the next version. Replaces the manifest last and in one step, so until
/// then players get the previous version, even after a failure. If an interrupted run has already published
/// this version, does only the remaining steps. A dry run writes nothing and takes no lock. Raises
/// PublishError, or LaterStepError if the version is published but a later step failed.
void Publish(const PublishRequest& request, Report& report);

}  // namespace patcher::publisher
