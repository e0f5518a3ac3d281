#pragma once

#include <cstddef>

#include "update/progress_tracker.h"
#include "update/update_run.h"

namespace patcher {

/// Work item of the archive stage: downloads chosenBundles[index], extracts its wanted files and enters them
/// in the record. If the archive fails, its files go to `retryPaths`. Always returns true, since a failed
/// archive does not stop the pool.
bool BundleWorker(RunState& run, ProgressTracker& tracker, std::size_t index, unsigned worker);

}  // namespace patcher
