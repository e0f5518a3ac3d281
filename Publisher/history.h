#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "content_store.h"
#include "manifest_document.h"

namespace patcher::publisher {

/// A copy of each published manifest lies in the store's folder history, named for its version.
std::filesystem::path HistoryFile(const ContentStore& store, std::int32_t version);

/// The copy of a version. Raises PublishError if it is missing or cannot be read.
Publication ReadCopy(const ContentStore& store, std::int32_t version);

/// What a copy says, in short.
struct PublishedVersion : DocumentHead {
  std::string problem;  ///< why the copy cannot be read; all but `version` is empty then
};

/// All versions of which there is a copy, the highest number first.
using History = std::vector<PublishedVersion>;

/// Raises PublishError if the folder cannot be listed. A copy that cannot be read is an entry with a problem.
History ReadHistory(const ContentStore& store);

/// Null if there is no copy of this version.
const PublishedVersion* FindVersion(const History& history, std::int32_t version);

/// The versions in the order in which they were last live, the latest first. Versions that never were are not
/// in it.
std::vector<const PublishedVersion*> ByTime(const History& history);

/// The number of the next document. `live` may be null.
std::uint64_t NextSequence(const History& history, const Publication* live);

/// The highest launcher that was ever announced to players. `live` may be null, and wins against an equal
/// build.
AnnouncedLauncher NewestLauncher(const History& history, const Publication* live);

/// Puts a copy of a live manifest into the history if the one there differs or is missing.
void KeepCopy(const ContentStore& store, const Publication& live);

}  // namespace patcher::publisher
