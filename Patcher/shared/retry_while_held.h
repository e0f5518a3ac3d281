#pragma once

#include <functional>

namespace patcher {

/// Calls `attempt`, which returns 0 or the system's error number, until it succeeds, or fails for another
/// reason than that a program holds a file for a moment, or 5 s have passed. Virus scanners hold every fresh
/// file so. Returns what `attempt` returned last. Waits on the calling thread; on Linux never.
[[nodiscard]] int RetryWhileHeld(const std::function<int()>& attempt);

}  // namespace patcher
