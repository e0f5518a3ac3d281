#include "update/verified_download.h"

#include <chrono>
#include <limits>
#include <thread>

namespace patcher {
namespace {

constexpr int kAttempts = 3;
constexpr std::chrono::milliseconds kPausePerAttempt{400};

}  // namespace

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
