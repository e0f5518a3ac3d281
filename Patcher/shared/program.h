#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace patcher {

/// Build number of this launcher, from the build option PATCHER_LAUNCHER_BUILD. Printed by --print-version,
/// shown in the window title, and compared with the manifest's patcherVersion.
extern const std::int32_t launcherBuild;

/// Full path of the running executable, set by SetExePath. Any thread.
const std::filesystem::path& ExePath();

/// Directory of the running executable: the install directory. The launcher reads and writes files only below
/// it.
const std::filesystem::path& ExeDir();

/// The place of a file of the manifest, or of an archive's entry. Raises an exception if the system cannot
/// represent the path, which is not checked otherwise.
std::filesystem::path InstalledPlace(std::string_view path);

/// Whether `file` is the name of the running executable. False for another hard link to the same file.
bool IsOwnName(const std::filesystem::path& file);

/// Main thread only, before any other thread exists.
void SetExePath(const std::filesystem::path& executable);

/// "TolmiraMMO Patcher v" and the build number: title of the window and of every message box.
std::u16string BuildWindowTitle();

}  // namespace patcher
