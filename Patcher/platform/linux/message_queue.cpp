#include "platform/message_queue.h"

#include <condition_variable>
#include <deque>
#include <optional>

#include "platform/mutex.h"

namespace platform {

struct MessageQueue::Impl {
  Handler handler;
  std::optional<int> exitCode;  // the queue's own thread only
  Mutex lock;
  std::condition_variable arrived;
  std::deque<QueueMessage> messages PATCHER_GUARDED_BY(lock);
  std::deque<QueueMessage> taken;  // the queue's own thread only

  QueueMessage Next() {
    if (taken.empty()) {
      MutexLock guard(lock);
      while (messages.empty()) guard.Wait(arrived);
      taken.swap(messages);
    }
    const QueueMessage message = taken.front();
    taken.pop_front();
    return message;
  }
};

MessageQueue::MessageQueue(Handler handler) : impl_(std::make_unique<Impl>()) {
  impl_->handler = std::move(handler);
}

MessageQueue::~MessageQueue() = default;

bool MessageQueue::Post(const QueueMessage& message) noexcept {
  try {
    // Notify while holding the lock: after that, the queue's thread may take the message and destroy the
    // queue.
    const MutexLock guard(impl_->lock);
    impl_->messages.push_back(message);
    // The thread waits only while the queue is empty, so only the first message needs a notification.
    if (impl_->messages.size() == 1) impl_->arrived.notify_one();
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

int MessageQueue::Run() {
  while (!impl_->exitCode) impl_->handler(impl_->Next());
  return *impl_->exitCode;
}

void MessageQueue::Quit(int code) { impl_->exitCode = code; }

}  // namespace platform
