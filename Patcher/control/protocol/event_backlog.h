#pragma once

#include <deque>
#include <functional>

#include "control/protocol/host_window.h"
#include "platform/mutex.h"

namespace patcher {

/// Holds back the events that a full message queue refuses, so that none is lost and their order stays. Any
/// thread, but for Advance.
class EventBacklog {
 public:
  /// Posts to the queue and never blocks; false if the queue did not take the event.
  using PostToQueue = std::function<bool(const UiEvent&)>;
  explicit EventBacklog(PostToQueue postToQueue) : postToQueue_(std::move(postToQueue)) {}

  /// Posts the event, or keeps it for later. Raises std::bad_alloc.
  void Post(const UiEvent& event);

  /// Posts what was kept, as far as the queue takes it. Called when the queue has given a message out.
  void Advance();

 private:
  const PostToQueue postToQueue_;
  platform::Mutex lock_;  // also keeps the order of posts
  std::deque<UiEvent> waiting_ PATCHER_GUARDED_BY(lock_);
};

}  // namespace patcher
