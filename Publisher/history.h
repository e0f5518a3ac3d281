#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "content_store.h"
#include "manifest_document.h"

namespace patcher::publisher {

/// The store's folder "history" has a copy of each published manifest, with the version as its name.
[[nodiscard]] std::filesystem::path HistoryFile(const ContentStore& store, std::int32_t version);

/// Reads the copy of a version. Raises PublishError if it is missing or cannot be read.
[[nodiscard]] Publication ReadCopy(const ContentStore& store, std::int32_t version);

/// The main values of a copy.
struct PublishedVersion : DocumentHead {
  std::string problem;  ///< why the copy cannot be read; then only `version` is set
};

/// All versions that have a copy, the highest number first.
using History = std::vector<PublishedVersion>;

/// Raises PublishError if the folder cannot be listed. A copy that cannot be read is an entry with a problem.
[[nodiscard]] History ReadHistory(const ContentStore& store);

/// Null if there is no copy of this version.
[[nodiscard]] const PublishedVersion* FindVersion(const History& history, std::int32_t version);

/// The versions that were live, sorted by the last time they went live, the latest first.
[[nodiscard]] std::vector<const PublishedVersion*> ByTime(const History& history);

/// The sequence of the next document. `live` may be null.
[[nodiscard]] std::uint64_t NextSequence(const History& history, const Publication* live);

/// The launcher with the highest build that was ever announced to players. `live` may be null. Of equal
/// builds, the launcher of `live` wins.
[[nodiscard]] AnnouncedLauncher NewestLauncher(const History& history, const Publication* live);

/// Writes a copy of a live manifest to the history, if the copy there differs or is missing.
void KeepCopy(const ContentStore& store, const Publication& live);

}  // namespace patcher::publisher
