#pragma once

#include <filesystem>
#include <string>

#include "minijson/minijson.h"

namespace patcher {

struct OptionsMessage {
  std::u16string text;
  bool unreadable = false;  ///< the settings file exists but could not be read: the values are defaults
};

/// Builds the "options" message: whether the settings file could be read, the screen sizes to offer, the
/// table of render settings, and all values in the page's form. If the file is unreadable, the values are
/// defaults with an additional member, which the page sends back. `path` is the settings file. Main thread;
/// waits like SettingsFile::Load.
OptionsMessage BuildOptionsMessage(const std::filesystem::path& path);

/// Whether the page got these values because the file was unreadable. Saving them would overwrite the real
/// values.
bool AreDefaultsForUnreadableFile(const MiniJson::Value& values);

/// Merges the page's values into the settings file on the disk. The line of a value that the page did not
/// send stays unchanged. A value that is not a number becomes the option's default. A screen size that is out
/// of range or incomplete does not change the resolution. Returns true if the file was written; see
/// SettingsFile::Write. Main thread.
[[nodiscard]] bool SaveOptions(const std::filesystem::path& path, const MiniJson::Value& values);

}  // namespace patcher
