#include "control/protocol/event_backlog.h"

namespace patcher {

void EventBacklog::Post(const UiEvent& event) {
  const platform::MutexLock guard(lock_);
  if (waiting_.empty() && postToQueue_(event)) return;
  waiting_.push_back(event);
}

void EventBacklog::Advance() {
  const platform::MutexLock guard(lock_);
  while (!waiting_.empty() && postToQueue_(waiting_.front())) waiting_.pop_front();
}

}  // namespace patcher
