#pragma once

#include <cstdint>
#include <functional>
#include <memory>

namespace platform {

/// One message of the main thread's queue, in the form of a Windows message: a number and two parameters. The
/// handler of the message owns a pointer that is posted in it.
struct QueueMessage {
  std::uint32_t number = 0;  ///< 0x8000 (WM_APP) and above
  std::uintptr_t wParam = 0;
  std::intptr_t lParam = 0;
};

/// The message queue of a main thread without a visible window. Created, run and destroyed on one thread.
class MessageQueue {
 public:
  using Handler = std::function<void(const QueueMessage&)>;

  /// `handler` runs on the thread that runs the queue, once for each message, in the order of posting.
  explicit MessageQueue(Handler handler);
  ~MessageQueue();
  MessageQueue(const MessageQueue&) = delete;
  MessageQueue& operator=(const MessageQueue&) = delete;

  /// Any thread; never blocks. Returns false if the message was not queued (Windows: the queue is full or
  /// destroyed).
  [[nodiscard]] bool Post(const QueueMessage& message) noexcept;

  /// Handles messages until Quit; returns Quit's code. Messages that are still queued when Quit is called are
  /// not handled on Linux and may be handled on Windows.
  int Run();

  /// Ends Run after the current message. The queue's own thread only.
  void Quit(int code);

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace platform
