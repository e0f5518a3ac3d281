#pragma once

#include "control/protocol/host_window.h"
#include "update/update_run.h"

namespace patcher {

/// Runs a verification (`repair` is false), which only reads, or a repair. Runs on a check worker under the
/// operation guard, which the caller releases after the return. A repair uses the list of the previous
/// verification if that was made for the server's current version; otherwise it verifies first. Then it
/// discards the listed files and runs the update, which downloads them. Raises nothing. Posts one `check`
/// message, and last one `ready`, which the update run posts if the repair runs it.
void RunCheckOperation(HostWindow& window, bool repair, const UpdateStages& stages);

}  // namespace patcher
