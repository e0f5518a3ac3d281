#pragma once

#include "control/dispatch.h"
#include "shared/show_error.h"

namespace patcher {

/// Every operation that the launcher has, for whichever host shows it. What they use lives as long as the
/// process.
OperationTable LauncherOperations(const ErrorBox& showErrorBox);

}  // namespace patcher
