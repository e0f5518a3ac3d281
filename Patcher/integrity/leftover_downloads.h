#pragma once

#include "update/patch_manifest.h"

namespace patcher {

/// Removes temporary files of downloads (a published file's name and ".part") that could not be deleted after
/// their download, or were left by a crash. Keeps every file that the manifest lists, and everything below a
/// link. No download may be running. The next cleanup tries again what could not be removed. May raise
/// exceptions of path conversions and of memory.
void RemoveLeftoverDownloads(const PatchManifest& manifest);

}  // namespace patcher
