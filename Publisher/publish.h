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
  std::optional<std::int32_t> build;  ///< what the publisher says it is
};

struct PublishRequest {
  std::filesystem::path client;
  std::filesystem::path www;
  std::optional<std::int32_t> version;  ///< nothing: one above the highest that is known
  std::optional<NewLauncher> launcher;  ///< none: the newest published one stays
  bool allowOlderLauncher = false;
  bool hold = false;  ///< everything but the last step: players keep the version they have
  SigningRequest signing;
  std::vector<std::string> excluded;
  ArchiveLimits limits;
  std::size_t keep = 0;  ///< versions that pruning keeps; 0: no pruning
  bool quiet = false;
  bool dryRun = false;  ///< only report what would be done
};

/// Publishes a client directory as the next version. The manifest is replaced last and in one step: until
/// then players see the version before, whatever happens. If that was done already, by a run that ended
/// early, only what it left is done. A dry run writes nothing at all, and takes no lock. Raises
/// PublishError; LaterStepError if the version is published all the same.
void Publish(const PublishRequest& request, Report& report);

}  // namespace patcher::publisher
