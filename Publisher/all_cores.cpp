#include "all_cores.h"

#include <algorithm>
#include <exception>
#include <memory>
#include <mutex>
#include <thread>

#include "shared/parallel_run.h"

namespace patcher::publisher {

void RunOnAllCores(std::size_t itemCount, Progress& progress, const CoreWork& work) {
  const unsigned threads = std::max(std::thread::hardware_concurrency(), 1u);
  std::vector<std::unique_ptr<FileHasher>> hashers;
  for (unsigned i = 0; i < threads; ++i) hashers.push_back(std::make_unique<FileHasher>(progress));
  std::mutex lock;
  std::exception_ptr failure;
  const bool ok = ParallelRun(itemCount, static_cast<int>(threads), [&](std::size_t index, unsigned worker) {
    try {
      work(index, *hashers[worker]);
      return true;
    } catch (...) {
      std::lock_guard guard(lock);
      if (!failure) failure = std::current_exception();
      return false;
    }
  });
  if (!ok && failure) std::rethrow_exception(failure);
}

}  // namespace patcher::publisher
