#pragma once

#include <cstdint>
#include <filesystem>

#include "content_store.h"
#include "manifest_document.h"
#include "progress_line.h"

namespace patcher::publisher {

/// Stores a launcher that has this build. Raises PublishError.
[[nodiscard]] AnnouncedLauncher StoreLauncher(const std::filesystem::path& file, std::int32_t build,
                                              const ContentStore& store, Progress& progress);

/// Verifies an announced launcher and returns it with its digest. Raises PublishError if the file in the
/// store is missing or has another digest than ExpectedDigest, if there is one. Returns a launcher without a
/// name unchanged.
[[nodiscard]] AnnouncedLauncher VerifyLauncher(const AnnouncedLauncher& launcher, const ContentStore& store,
                                               Progress& progress);

/// The digest that a launcher must have: that of the manifest, or else that in its name; empty if there is
/// neither.
[[nodiscard]] std::string ExpectedDigest(const AnnouncedLauncher& launcher);

}  // namespace patcher::publisher
