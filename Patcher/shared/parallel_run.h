#pragma once

#include <cstddef>
#include <functional>

namespace patcher {

/// Processes one item. `index` is the item's index, `worker` the worker's number (from 0). Returning false
/// stops the pool.
using WorkItem = std::function<bool(std::size_t index, unsigned worker)>;

/// Runs the items in order on up to `threads` workers (at least 1, at most one per item) and waits for all of
/// them. After an item returns false or raises, no further item starts; running items continue to their end.
/// Returns true if there was no such item. If the system starts fewer threads, these do all the work.
/// Exceptions are dropped: an item must report its errors itself.
[[nodiscard]] bool ParallelRun(std::size_t itemCount, int threads, const WorkItem& work);

}  // namespace patcher
