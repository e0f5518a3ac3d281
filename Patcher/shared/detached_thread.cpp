#include "shared/detached_thread.h"

#include <future>
#include <thread>
#include <utility>

namespace patcher {

// The entry waits until its thread is detached. If a thread ends before that, the thread library of Windows
// frees memory that the ending thread still uses: the thread then spins forever, holding the lock that every
// other thread needs to start or to end.
void StartDetachedThread(std::function<void()> entry) {
  std::promise<void> detached;
  std::thread([entry = std::move(entry), isDetached = detached.get_future()]() mutable {
    isDetached.wait();
    entry();
  }).detach();
  detached.set_value();
}

}  // namespace patcher
