#pragma once

#include <filesystem>
#include <functional>

#include "shared/show_error.h"
#include "update/run_state.h"

namespace patcher {

// The launcher replaces itself in two stages, with three files in the install directory: the running
// executable, which may have any name; Patcher.new.exe, the new launcher before the swap; Patcher.old.exe,
// the old launcher until the next run removes it. docs/self_update.md describes what a player finds after a
// crash at any step.

/// The self-update stage of the run: downloads the launcher that the manifest announces, if its build number
/// is higher than the running launcher's. One attempt. Returns true if Patcher.new.exe is complete, flushed
/// to disk and has the running launcher's mode; then the run must end and SelfUpdateSwap follows. Returns
/// false if there is nothing to download, if the download failed (after a status line), or if the file is the
/// running launcher itself: if a server announces a higher number than its file has, the launcher would
/// otherwise restart forever. Then the run continues without another status line.
///
/// The download is accepted if it is not empty, has the manifest's patcherSha256 if there is one, is complete
/// by its own headers if it is a program, and is a program if the server did not announce its length.
[[nodiscard]] bool FetchNewLauncher(RunState& run);

/// Starts a launcher and does not wait for it. Returns 0, or the system's error number.
using LauncherStart = std::function<int(const std::filesystem::path& launcher)>;
[[nodiscard]] int StartLauncher(const std::filesystem::path& launcher);

/// Renames the running launcher, moves the new one to its place and starts it. Shows an error if a move
/// fails. If the new launcher cannot be moved or started, the old one gets its name again and the new one is
/// again Patcher.new.exe, so that the player still has a launcher. The process must end after this in every
/// case. Main thread.
void SelfUpdateSwap(const ShowError& showError, const LauncherStart& start = StartLauncher);

}  // namespace patcher
