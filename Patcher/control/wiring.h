#pragma once

#include "control/dispatch.h"
#include "shared/show_error.h"

namespace patcher {

/// All operations of the launcher, for any host. The objects that they use live until the process ends.
OperationTable LauncherOperations(const ShowError& showError);

}  // namespace patcher
