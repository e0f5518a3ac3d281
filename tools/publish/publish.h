#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

#include "archive_plan.h"

namespace patcher {

/// A launcher that is published along with the game.
struct NewLauncher {
  std::filesystem::path file;
  std::int32_t build = 0;
};

struct PublishRequest {
  std::filesystem::path client;
  std::filesystem::path www;
  std::int32_t version = 0;
  std::optional<NewLauncher> launcher;  ///< none: the published one stays
  ArchiveLimits limits;
  std::size_t keep = 0;  ///< versions that pruning keeps; 0: no pruning
  bool quiet = false;
};

/// Publishes a client directory as the next version. The manifest is replaced last and in one step: until
/// then players see the version before, whatever happens. Tells on standard output what was done. Raises
/// PublishError.
void Publish(const PublishRequest& request);

}  // namespace patcher
