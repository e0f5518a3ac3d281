#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "update/patch_manifest.h"

namespace patcher {

/// Whether an update downloads archives or single files.
struct ArchiveChoice {
  std::vector<const PatchBundle*> archives;  ///< those that contain a wanted file, in the given order
  std::uint64_t bytes = 0;                   ///< total size of these archives
  bool isCheaper = false;                    ///< true: download the archives; false: download each file
};

/// The archives are cheaper if there is at least one and together they have fewer bytes than all wanted
/// files, including those in no archive. A pure function: the launcher uses it to decide, the publisher's
/// program to forecast.
ArchiveChoice ChooseArchives(const std::vector<const PatchBundle*>& archives,
                             const std::set<std::string, std::less<>>& wanted, std::uint64_t wantedBytes);

}  // namespace patcher
