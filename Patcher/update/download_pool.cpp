#include "update/download_pool.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <exception>
#include <limits>
#include <thread>
#include <vector>

namespace patcher {
namespace {

constexpr int kAttempts = 3;
constexpr std::chrono::milliseconds kPausePerAttempt{400};

/// What the workers of one pool share.
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
    // No more threads, or no memory for one.
    if (workers.empty()) pool.Work(0);
  }
  for (std::thread& worker : workers) worker.join();
  return !pool.stop;
}

bool DownloadVerified(HttpSession& session, const std::string& path, const std::filesystem::path& destination,
                      const ExpectedFile& expected, ProgressTracker& tracker, std::string& reason) {
  const bool representable = expected.size <= std::numeric_limits<std::uint64_t>::max() - kMaxExcess;
  DownloadRules rules;
  rules.maxSize = representable ? expected.size + kMaxExcess : std::numeric_limits<std::uint64_t>::max();
  for (int attempt = 1; attempt <= kAttempts; ++attempt) {
    std::uint64_t attemptBytes = 0;
    rules.onBytes = [&](std::uint64_t count) {
      attemptBytes += count;
      tracker.AddBytes(count);
    };
    std::string digest;
    const bool received = session.DownloadToFile(path, destination, rules, digest);
    if (received && digest == expected.digest) return true;
    tracker.RollBack(attemptBytes);
    reason = received ? "contenu incorrect" : "transfert interrompu";
    if (attempt < kAttempts) std::this_thread::sleep_for(attempt * kPausePerAttempt);
  }
  return false;
}

}  // namespace patcher
