#pragma once

#include <filesystem>

namespace platform {

/// Whether the entry itself, not what it leads to, is a symbolic link or, on Windows, a junction, a mount
/// point or any other entry that leads to another place. False if there is no entry. An entry that cannot be
/// examined counts as a link, so that no walk goes through it. The standard library's own queries see
/// no links on Windows: they must not decide where a walk or a removal goes.
[[nodiscard]] bool IsLink(const std::filesystem::path& entry);

}  // namespace platform
