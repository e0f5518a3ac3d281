#pragma once

#include <deque>
#include <functional>

#include "control/protocol/host_window.h"
#include "platform/mutex.h"

namespace patcher {

/// Keeps the events that a full message queue refuses, so that none is lost and their order is kept. Any
/// thread, except Advance.
class EventBacklog {
 public:
  /// Posts to the queue and never blocks; false if the queue did not take the event.
  using PostToQueue = std::function<bool(const UiEvent&)>;
  explicit EventBacklog(PostToQueue postToQueue) : postToQueue_(std::move(postToQueue)) {}

  /// Posts the event, or keeps it for later. Raises std::bad_alloc.
  void Post(const UiEvent& event);

  /// Posts the kept events until the queue refuses one. Called on the main thread after a message was taken
  /// from the queue.
  void Advance();

 private:
  const PostToQueue postToQueue_;
  platform::Mutex lock_;  // also keeps the order of posts
  std::deque<UiEvent> waiting_ PATCHER_GUARDED_BY(lock_);
};

}  // namespace patcher
