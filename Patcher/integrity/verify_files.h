#pragma once

#include "control/protocol/host_window.h"
#include "control/protocol/page_messages.h"
#include "update/patch_manifest.h"

namespace patcher {

/// Compares every file of the manifest with what is on disk, on PatchConfig::connections workers, and fills
/// `result`. Reads only. Posts a progress for every 50th file and the last, a status for every 500th. A file
/// whose check raises counts as damaged. Raises std::runtime_error if the pass could not be brought to its
/// end.
void VerifyFiles(HostWindow& window, const PatchManifest& manifest, CheckResult& result);

}  // namespace patcher
