#pragma once

#include <filesystem>
#include <string>

#include "minijson/minijson.h"

namespace patcher {

struct OptionsMessage {
  std::u16string text;
  bool blind = false;  ///< the settings file is there but could not be read: the values are defaults
};

/// The "options" message: whether the settings file could be read, the screen sizes to offer, the render
/// tuning table and all values as the page shows them. The values of a blind message have one more member,
/// which the page sends back with them. `path` is the settings file. Main thread; waits as SettingsFile::Load
/// does.
OptionsMessage BuildOptionsMessage(const std::filesystem::path& path);

/// Whether the page has these values from a blind message: saving them would lose the real ones.
bool AreFromBlindMessage(const MiniJson::Value& values);

/// Merges the page's values into the settings file as it is on the disk. A value that the page did not
/// send keeps its line; one that is no number becomes the option's default; a screen size out of range, or
/// half of one, leaves the resolution alone. True if the file was written; see SettingsFile::Write. Main
/// thread.
[[nodiscard]] bool SaveOptions(const std::filesystem::path& path, const MiniJson::Value& values);

}  // namespace patcher
