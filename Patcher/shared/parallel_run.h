#pragma once

#include <cstddef>
#include <functional>

namespace patcher {

/// A work item: takes the item's index and the worker's number (from 0); false stops the pool.
using WorkItem = std::function<bool(std::size_t index, unsigned worker)>;

/// Runs the items in order on up to `threads` workers (at least 1, never more than items) and waits for all
/// of them. After an item that returns false or raises, no new item is begun; those in progress run to their
/// end. True if there was no such item. If the system grants fewer threads, those there are do the work. What
/// an item raises is dropped: an item that has something to report does so itself.
[[nodiscard]] bool ParallelRun(std::size_t itemCount, int threads, const WorkItem& work);

}  // namespace patcher
