#pragma once

#include <mutex>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "control/host_operations.h"
#include "control/protocol/ui_event.h"

namespace patcher {

/// A host that records its calls. Workers run to their end inside StartThread's thread, which
/// the test joins through `JoinWorkers`; events wait until the test takes them.
class RecordingHost final : public HostOperations {
 public:
  ~RecordingHost() override {
    JoinWorkers();
    for (const UiEvent& event : TakeEvents()) ReleasePayload(event);
  }

  void PostEvent(const UiEvent& event) noexcept override {
    std::lock_guard guard(lock_);
    events_.push_back(event);
  }
  void SendToPage(const std::u16string& text) override { sent.push_back(text); }
  void EndMessageLoop() override { calls.emplace_back("end"); }
  void StartDragging() override { calls.emplace_back("drag"); }
  void Minimize() override { calls.emplace_back("minimize"); }
  void ToggleMaximize() override { calls.emplace_back("maximize"); }
  void AskToClose() override { calls.emplace_back("close"); }
  void StartThread(std::function<void()> entry) override {
    if (refuseThreads)
      throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again));
    workers_.emplace_back([entry = std::move(entry)]() mutable {
      entry();
      entry = nullptr;
    });
  }

  void JoinWorkers() {
    for (std::thread& worker : workers_) worker.join();
    workers_.clear();
  }
  std::vector<UiEvent> TakeEvents() {
    std::lock_guard guard(lock_);
    return std::exchange(events_, {});
  }

  bool refuseThreads = false;
  std::vector<std::u16string> sent;
  std::vector<std::string> calls;

 private:
  std::mutex lock_;
  std::vector<UiEvent> events_;
  std::vector<std::thread> workers_;
};

}  // namespace patcher
