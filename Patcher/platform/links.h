#pragma once

#include <filesystem>

namespace platform {

/// Whether the entry itself (not its target) is a symbolic link or, on Windows, a junction, a mount point or
/// another entry that points elsewhere. False if there is no entry. An entry that cannot be examined counts
/// as a link, so that no directory walk follows it. The standard library does not recognize links on Windows:
/// do not use it to decide which directories to walk or remove.
[[nodiscard]] bool IsLink(const std::filesystem::path& entry);

}  // namespace platform
