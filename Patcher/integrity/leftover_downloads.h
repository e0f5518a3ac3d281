#pragma once

#include "update/patch_manifest.h"

namespace patcher {

/// Removes the temporary files of transfers (a published file's name and ".part") that could not be deleted
/// when their transfer ended, or whose launcher died. A file that the manifest lists stays, as does
/// everything that a link leads to. No download may run. What cannot be removed is tried again the next time.
/// May raise what the file system's names and memory raise.
void RemoveLeftoverDownloads(const PatchManifest& manifest);

}  // namespace patcher
