#pragma once

#include <functional>

namespace patcher {

/// Runs `entry` on a thread of its own that nobody waits for. Raises std::system_error when no thread is to
/// be had; `entry` has not run then.
void StartDetachedThread(std::function<void()> entry);

}  // namespace patcher
