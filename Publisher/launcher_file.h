#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

namespace patcher::publisher {

/// Reads the build number of a launcher from its version resource, without running the program. A launcher
/// for Linux has no such resource, so `claimed` must be given and is returned. Raises PublishError if the
/// file is not a launcher, or if `claimed` is given and differs.
[[nodiscard]] std::int32_t LauncherBuild(const std::filesystem::path& file,
                                         std::optional<std::int32_t> claimed);

/// The build number in a published launcher; nothing if it has none, like a launcher for Linux.
[[nodiscard]] std::optional<std::int32_t> OwnLauncherBuild(const std::filesystem::path& file);

}  // namespace patcher::publisher
