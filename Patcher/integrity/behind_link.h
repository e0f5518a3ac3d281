#pragma once

#include <filesystem>

namespace patcher {

/// Whether the way from the install directory to the entry (relative to it) leads through a link. Whether the
/// entry itself is one does not matter.
bool IsBehindLink(const std::filesystem::path& relative);

}  // namespace patcher
