#pragma once

#include <filesystem>

namespace patcher {

/// Whether one of the directories between the install directory and the entry is a link. `relative` is
/// relative to the install directory. The entry itself may be a link or not.
bool IsBelowLink(const std::filesystem::path& relative);

}  // namespace patcher
