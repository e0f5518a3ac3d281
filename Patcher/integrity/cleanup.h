#pragma once

#include "control/protocol/host_window.h"
#include "update/patch_manifest.h"

namespace patcher {

// The cleanup after a complete run. Runs on the thread of the run, does not report what could not be removed,
// raises nothing, and never follows a link.

/// Removes the files in the game's data directories that the manifest does not list. Posts at most one
/// status.
void SweepResidualFiles(HostWindow& window, const PatchManifest& manifest);

/// Removes the items of earlier layouts, unless the manifest lists them or a file in them. Posts at most one
/// status.
void RemoveObsoleteItems(HostWindow& window, const PatchManifest& manifest);

/// The cleanup stage of the run: the sweep, then the obsolete items, then the temporary files of downloads.
void CleanUp(HostWindow& window, const PatchManifest& manifest);

}  // namespace patcher
