#include "shared/detached_thread.h"

#include <future>
#include <thread>
#include <utility>

namespace patcher {

// The entry waits until its thread is detached. On Windows the thread library takes back the memory of a
// thread that ends before that while the thread still leaves through it: it then spins forever, under the
// lock that every other thread needs to start or to end.
void StartDetachedThread(std::function<void()> entry) {
  std::promise<void> detached;
  std::thread([entry = std::move(entry), isDetached = detached.get_future()]() mutable {
    isDetached.wait();
    entry();
  }).detach();
  detached.set_value();
}

}  // namespace patcher
