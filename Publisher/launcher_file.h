#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

namespace patcher::publisher {

/// The build number of a launcher, read from the program's own version resource; the program is never run. A
/// launcher for Linux has no such resource: there the number is `claimed`, which must be given. Raises
/// PublishError if the file is no launcher, or if `claimed` is given and differs.
std::int32_t LauncherBuild(const std::filesystem::path& file, std::optional<std::int32_t> claimed);

/// What a published launcher says itself; nothing if it says nothing, as one for Linux.
std::optional<std::int32_t> OwnLauncherBuild(const std::filesystem::path& file);

}  // namespace patcher::publisher
