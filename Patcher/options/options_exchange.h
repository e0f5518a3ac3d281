#pragma once

#include <filesystem>
#include <string>

#include "minijson/minijson.h"

namespace patcher {

/// The "options" message: whether the settings file exists, the screen sizes to offer, the render tuning
/// table and all values as the page shows them. `path` is the settings file. Main thread.
std::u16string BuildOptionsMessage(const std::filesystem::path& path);

/// Merges the page's values into the settings file as it stands on the disk. A value that the page did not
/// send keeps its line; one that is no number becomes the option's default; a screen size out of range, or
/// half of one, leaves the resolution alone. True if the file was written; see SettingsFile::Write. Main
/// thread.
bool SaveOptions(const std::filesystem::path& path, const MiniJson::Value& values);

}  // namespace patcher
