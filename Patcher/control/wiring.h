#pragma once

#include "control/dispatch.h"
#include "shared/show_error.h"

namespace patcher {

/// Every operation of the launcher, for any host. What the operations use lives as long as the process.
OperationTable LauncherOperations(const ShowError& showError);

}  // namespace patcher
