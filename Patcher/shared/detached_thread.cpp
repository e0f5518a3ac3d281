#include "shared/detached_thread.h"

#include <future>
#include <thread>
#include <utility>

namespace patcher {

// The entry waits until its thread is detached. If a thread ended before that, the thread library of Windows
// would free memory that the ending thread still uses. The thread would then spin forever while it holds the
// lock that all threads need to start or end.
void StartDetachedThread(std::function<void()> entry) {
  std::promise<void> detached;
  std::thread([entry = std::move(entry), isDetached = detached.get_future()]() mutable {
    isDetached.wait();
    entry();
  }).detach();
  detached.set_value();
}

}  // namespace patcher
