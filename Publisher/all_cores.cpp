#include "all_cores.h"

#include <algorithm>
#include <exception>
#include <memory>
#include <numeric>
#include <thread>

#include "platform/mutex.h"
#include "shared/parallel_run.h"

namespace patcher::publisher {
namespace {

/// Items up to this size take little time, so they keep their order: neighbours are close to each other on
/// the disk.
constexpr std::uint64_t kSmall = 8u << 20;

std::vector<std::size_t> LargestFirst(const std::vector<std::uint64_t>& sizes) {
  std::vector<std::size_t> order(sizes.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(), [&sizes](std::size_t a, std::size_t b) {
    return std::max(sizes[a], kSmall) > std::max(sizes[b], kSmall);
  });
  return order;
}

}  // namespace

void RunOnAllCores(const std::string& stage, const std::vector<std::uint64_t>& sizes, Progress& progress,
                   const CoreWork& work) {
  const std::vector<std::size_t> order = LargestFirst(sizes);
  const unsigned threads = std::max(std::thread::hardware_concurrency(), 1u);
  std::vector<std::unique_ptr<FileHasher>> hashers;
  for (unsigned i = 0; i < threads; ++i) hashers.push_back(std::make_unique<FileHasher>(progress));
  progress.Begin(stage, sizes.size(), std::accumulate(sizes.begin(), sizes.end(), std::uint64_t{0}));
  platform::Mutex lock;
  std::exception_ptr failure;
  const bool ok =
      ParallelRun(order.size(), static_cast<int>(threads), [&](std::size_t number, unsigned worker) {
        try {
          work(order[number], *hashers[worker]);
          progress.ItemDone();
          return true;
        } catch (...) {
          const platform::MutexLock guard(lock);
          if (!failure) failure = std::current_exception();
          return false;
        }
      });
  progress.End();
  if (!ok && failure) std::rethrow_exception(failure);
}

}  // namespace patcher::publisher
