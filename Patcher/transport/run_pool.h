#pragma once

#include <cstddef>

#include "shared/parallel_run.h"

namespace patcher {

/// Calls ParallelRun with as many workers as patcher.ini sets connections. Logs the exceptions of work items.
[[nodiscard]] bool RunPool(std::size_t itemCount, const WorkItem& work);

}  // namespace patcher
