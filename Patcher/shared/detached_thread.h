#pragma once

#include <functional>

namespace patcher {

/// Runs `entry` on a thread of its own, without waiting for it. Raises std::system_error if there is no
/// thread; `entry` has not run then.
void StartDetachedThread(std::function<void()> entry);

}  // namespace patcher
