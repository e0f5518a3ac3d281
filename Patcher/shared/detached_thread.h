#pragma once

#include <functional>

namespace patcher {

/// Runs `entry` on a new thread and does not wait for it. Raises std::system_error if no thread can be
/// started; `entry` does not run then.
void StartDetachedThread(std::function<void()> entry);

}  // namespace patcher
