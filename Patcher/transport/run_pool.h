#pragma once

#include <cstddef>

#include "shared/parallel_run.h"

namespace patcher {

/// ParallelRun with as many workers as patcher.ini has connections. An exception of a work item leaves a line
/// in the debug log.
[[nodiscard]] bool RunPool(std::size_t itemCount, const WorkItem& work);

}  // namespace patcher
