#pragma once

#include "shared/error_box.h"
#include "update/run_state.h"

namespace patcher {

// The launcher replaces itself in two stages, with three files in the install directory: the running
// executable, whatever its name; Patcher.new.exe, the new one until the swap; Patcher.old.exe, the replaced
// one until the next run sweeps it. docs/self_update.md tells what a player finds after a death at any step.

/// The stage of the run: fetches the launcher that the manifest announces, if its number is above the running
/// one's. One attempt. True if Patcher.new.exe is whole, on the disk itself and as executable as the running
/// launcher; the run is then to end in favour of SelfUpdateSwap. False if there is nothing to fetch, if that
/// failed (told in a status line), or if what came is the running launcher itself: a server that announces a
/// number above its file's would otherwise restart the launcher for ever. The player is told nothing more
/// then, and the run goes on.
bool FetchNewLauncher(UpdateRun& run);

/// Moves the running launcher aside and the new one to its place, and starts that. A failed move is shown; if
/// the second one fails, the old launcher is moved back, so that the player still has one. The process ends
/// after this, whatever the outcome. Main thread.
void SelfUpdateSwap(const ErrorBox& showErrorBox);

}  // namespace patcher
