#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

#include "content_store.h"

namespace patcher {

/// A copy of each published manifest lies in the store's folder history, named for its version.
std::filesystem::path HistoryFile(const ContentStore& store, std::int32_t version);

/// Versions of which a copy is there, newest first.
std::vector<std::int32_t> PublishedVersions(const ContentStore& store);

}  // namespace patcher
