#include "shared/retry_while_held.h"

#include <chrono>
#include <thread>

#include "platform/files.h"

namespace patcher {

int RetryWhileHeld(const std::function<int()>& attempt) {
  constexpr std::chrono::milliseconds kPause{50};
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
  for (;;) {
    const int error = attempt();
    if (!platform::IsHeldForAMoment(error) || std::chrono::steady_clock::now() >= end) return error;
    std::this_thread::sleep_for(kPause);
  }
}

}  // namespace patcher
