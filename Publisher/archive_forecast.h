#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "archive_plan.h"
#include "content_store.h"

namespace patcher::publisher {

/// The archives that a version would have, without packing any.
struct ArchiveForecast {
  /// Those that would be packed have an estimated size, and neither a name nor a digest.
  std::vector<PublishedArchive> archives;
  std::size_t toPack = 0;
  std::uint64_t bytesToPack = 0;  ///< estimated
  /// What the published archives have made of 100 bytes of content; nothing if there are none. Then estimates
  /// are as large as the content, which is an upper bound.
  std::optional<double> percent;
};

/// `previous` may be null.
ArchiveForecast ForecastArchives(const PatchManifest& manifest, const Publication* previous,
                                 const ContentStore& store, const ArchiveLimits& limits);

}  // namespace patcher::publisher
