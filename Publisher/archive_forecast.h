#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "archive_plan.h"
#include "content_store.h"

namespace patcher::publisher {

/// The archives that a version would have, without any of them being packed.
struct ArchiveForecast {
  /// New archives have an estimated size, no name and no digest.
  std::vector<PublishedArchive> archives;
  std::size_t toPack = 0;
  std::uint64_t bytesToPack = 0;  ///< estimated
  /// The size of the published archives in percent of their content; nothing if there are none. Then each
  /// estimate is the size of the content, which is an upper bound.
  std::optional<double> percent;
};

/// `previous` may be null.
[[nodiscard]] ArchiveForecast ForecastArchives(const PatchManifest& manifest, const Publication* previous,
                                               const ContentStore& store, const ArchiveLimits& limits);

}  // namespace patcher::publisher
