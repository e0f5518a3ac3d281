#pragma once

#include <cstddef>
#include <cstdint>

#include "content_store.h"
#include "manifest_document.h"

namespace patcher {

struct PruneResult {
  std::size_t files = 0;
  std::uint64_t bytes = 0;
};

/// Deletes contents, archives, launchers and manifest copies that neither `current` nor one of the `keep`
/// newest versions (it is one of them) uses. Raises PublishError, before anything is deleted, if a kept
/// manifest cannot be read.
PruneResult Prune(const ContentStore& store, const Publication& current, std::size_t keep);

}  // namespace patcher
