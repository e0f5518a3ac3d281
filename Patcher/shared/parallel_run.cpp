#include "shared/parallel_run.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <thread>
#include <vector>

namespace patcher {
namespace {

/// Shared state of one pool's workers.
struct Pool {
  const std::size_t itemCount;
  const WorkItem& work;
  std::atomic<std::size_t> next{0};
  std::atomic<bool> stop{false};

  void Work(unsigned worker) {
    while (!stop) {
      const std::size_t index = next++;
      if (index >= itemCount) return;
      if (!RunItem(index, worker)) stop = true;
    }
  }

  bool RunItem(std::size_t index, unsigned worker) {
    try {
      return work(index, worker);
    } catch (...) {
      return false;
    }
  }
};

}  // namespace

bool ParallelRun(std::size_t itemCount, int threads, const WorkItem& work) {
  if (itemCount == 0) return true;
  const std::size_t count = std::min(static_cast<std::size_t>(std::max(threads, 1)), itemCount);
  Pool pool{itemCount, work};
  std::vector<std::thread> workers;
  workers.reserve(count);
  try {
    for (unsigned number = 0; number < count; ++number) {
      workers.emplace_back([&pool, number] { pool.Work(number); });
    }
  } catch (const std::exception&) {
    // The system cannot start another thread.
    if (workers.empty()) pool.Work(0);
  }
  for (std::thread& worker : workers) worker.join();
  return !pool.stop;
}

}  // namespace patcher
