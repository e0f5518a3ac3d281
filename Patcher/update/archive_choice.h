#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "update/patch_manifest.h"

namespace patcher {

/// Archives or single files: what an update fetches.
struct ArchiveChoice {
  std::vector<const PatchBundle*> archives;  ///< those that list a wanted path, in the order given
  std::uint64_t bytes = 0;                   ///< of these archives
  bool isCheaper = false;                    ///< they are fetched; otherwise each file by itself
};

/// The archives are cheaper if there is one and all of them have fewer bytes than the wanted files, those in
/// no archive included. Pure: the launcher decides with it, and the publisher's program forecasts.
ArchiveChoice ChooseArchives(const std::vector<const PatchBundle*>& archives,
                             const std::set<std::string, std::less<>>& wanted, std::uint64_t wantedBytes);

}  // namespace patcher
