#pragma once

#include <filesystem>

namespace patcher::publisher {

/// Whether `inner` is below the folder `outer` or is the same folder. Their spelling does not matter, and
/// links are resolved.
[[nodiscard]] bool IsBelow(const std::filesystem::path& inner, const std::filesystem::path& outer);

}  // namespace patcher::publisher
