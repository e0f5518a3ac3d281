#pragma once

#include <cstdint>
#include <filesystem>

#include "content_store.h"
#include "manifest_document.h"
#include "progress_line.h"

namespace patcher::publisher {

/// Stores a launcher whose build has been read. Raises PublishError.
AnnouncedLauncher StoreLauncher(const std::filesystem::path& file, std::int32_t build,
                                const ContentStore& store, Progress& progress);

/// The announced launcher with its digest. Raises PublishError if the store does not hold it as its name, or
/// an earlier manifest, says. One without a name is returned as it is.
AnnouncedLauncher ProveLauncher(const AnnouncedLauncher& launcher, const ContentStore& store,
                                Progress& progress);

/// The digest that a launcher must have: the manifest's, or that in its name; empty if neither says one.
std::string ExpectedDigest(const AnnouncedLauncher& launcher);

}  // namespace patcher::publisher
