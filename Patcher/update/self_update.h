#pragma once

#include <filesystem>
#include <functional>

#include "shared/show_error.h"
#include "update/run_state.h"

namespace patcher {

// The launcher replaces itself in two stages, with three files in the install directory: the running
// executable, whatever its name; Patcher.new.exe, the new one until the swap; Patcher.old.exe, the replaced
// one until the next run sweeps it. docs/self_update.md says what a player finds after a death at any step.

/// The stage of the run: fetches the launcher that the manifest announces, if its number is above the running
/// one's. One attempt. True if Patcher.new.exe is whole, on the disk itself and as executable as the running
/// launcher; the run is then to end in favour of SelfUpdateSwap. False if there is nothing to fetch, if that
/// failed (a status line says so), or if what came is the running launcher itself: a server that announces a
/// number above its file's would otherwise restart the launcher for ever. The run then goes on without a
/// further status line.
///
/// What counts as received: a body that is not empty, has the manifest's patcherSha256 if there is one, is
/// whole by its own headers if it is a program, and is a program if its length was not announced.
[[nodiscard]] bool FetchNewLauncher(RunState& run);

/// Starts a launcher and does not wait for it. Returns 0, or the system's error number.
using LauncherStart = std::function<int(const std::filesystem::path& launcher)>;
[[nodiscard]] int StartLauncher(const std::filesystem::path& launcher);

/// Moves the running launcher aside and the new one to its place, and starts that. A failed move is shown. If
/// the new launcher cannot be moved or started, the old one gets its name back and the new one is
/// Patcher.new.exe again, so that the player still has a launcher. The process ends after this, whatever the
/// outcome. Main thread.
void SelfUpdateSwap(const ShowError& showError, const LauncherStart& start = StartLauncher);

}  // namespace patcher
