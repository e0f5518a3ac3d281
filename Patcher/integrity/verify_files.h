#pragma once

#include "control/protocol/host_window.h"
#include "control/protocol/page_messages.h"
#include "update/patch_manifest.h"

namespace patcher {

/// Compares every file of the manifest with the file on disk, on PatchConfig::connections workers, and fills
/// `result`. Reads only. Posts a progress for every 50th file and for the last, and a status for every 500th.
/// A file whose check raises an exception counts as damaged. Raises std::runtime_error if not all files could
/// be checked.
void VerifyFiles(HostWindow& window, const PatchManifest& manifest, CheckResult& result);

}  // namespace patcher
