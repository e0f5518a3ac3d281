#pragma once

#include "control/protocol/host_window.h"
#include "update/patch_manifest.h"

namespace patcher {

// The passes at the end of a run that fetched everything it wanted. They run on the run's thread, stay
// silent about what they could not remove, raise nothing, and never go through a link.

/// Removes the loose files in the game's data directories that the manifest does not list. Posts at most one
/// status.
void SweepResidualFiles(HostWindow& window, const PatchManifest& manifest);

/// Removes the items of former layouts, unless the manifest lists them or something in them. Posts at most
/// one status.
void RemoveObsoleteItems(HostWindow& window, const PatchManifest& manifest);

/// The cleanup stage of the run: the sweep, then the obsolete items, then the temporary files of transfers.
void CleanUp(HostWindow& window, const PatchManifest& manifest);

}  // namespace patcher
