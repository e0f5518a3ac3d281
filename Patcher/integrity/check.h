#pragma once

#include "control/protocol/host_window.h"
#include "update/update_run.h"

namespace patcher {

/// Verification (`repair` false: reads only) and repair, on a check worker under the operation guard, which
/// the caller releases when this has returned. A repair takes up the list of the verification before it, if
/// that was made for the server's present version, and verifies first otherwise; then it discards the listed
/// files and runs the update, which fetches them. Raises nothing. Posts one `check` message, and one `ready`
/// after everything else (a repair with something to do leaves that to the update run).
void RunCheckOperation(HostWindow& window, bool repair, const UpdateStages& stages);

}  // namespace patcher
