#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace patcher {

/// Number of this build of the launcher: the answer to --print-version, part of the window title, and
/// what the manifest's patcherVersion is compared with. Set by the build (PATCHER_LAUNCHER_BUILD).
extern const std::int32_t launcherBuild;

/// Full path of the running executable. Set once by SetExePath, read-only afterwards, any thread.
const std::filesystem::path& ExePath();

/// Directory of the running executable: the install directory, root of everything read and written.
const std::filesystem::path& ExeDir();

/// Whether removing `file` would take the running executable's name away. Not so for a second name of the
/// same file (a hard link).
bool IsOwnName(const std::filesystem::path& file);

/// Main thread only, before any other thread exists.
void SetExePath(const std::filesystem::path& executable);

/// "TolmiraMMO Patcher v" and the build number: title of the window and of every message box.
std::u16string BuildWindowTitle();

}  // namespace patcher
