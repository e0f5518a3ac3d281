#pragma once

#include <functional>

namespace patcher {

/// Calls `attempt`, which returns 0 or the system's error number. Repeats the call for up to 5 s while it
/// fails because another program has a file open (platform::IsHeldForAMoment), as virus scanners do with
/// every new file. Returns the last result. Blocks the calling thread; never waits on Linux.
[[nodiscard]] int RetryWhileHeld(const std::function<int()>& attempt);

}  // namespace patcher
