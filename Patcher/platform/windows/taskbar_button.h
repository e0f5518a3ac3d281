#pragma once

#include <windows.h>

#include <shobjidl.h>

#include "platform/window.h"
#include "platform/windows/com_reference.h"

namespace platform {

/// The window's button on the task bar. The system creates it some time after the window, and again after a
/// restart of the task bar. Main thread only.
class TaskbarButton {
 public:
  /// The message that the window receives when there is a new button.
  static UINT CreatedMessage() {
    static const UINT number = RegisterWindowMessageW(L"TaskbarButtonCreated");
    return number;
  }

  /// Allows this message even if the program has more rights than the task bar.
  static void AllowMessage(HWND window) {
    ChangeWindowMessageFilterEx(window, CreatedMessage(), MSGFLT_ALLOW, nullptr);
  }

  void OnCreated(HWND window) {
    if (!list_) {
      CoCreateInstance(CLSID_TaskbarList, nullptr, CLSCTX_INPROC_SERVER, IID_ITaskbarList3,
                       reinterpret_cast<void**>(list_.Receive()));
    }
    if (!list_ || FAILED(list_->HrInit())) return;
    created_ = true;
    Apply(window);
  }

  void Show(HWND window, const TaskProgress& progress) {
    if (progress == progress_) return;
    progress_ = progress;
    if (created_) Apply(window);
  }

 private:
  void Apply(HWND window) const {
    static constexpr TBPFLAG kFlags[] = {TBPF_NOPROGRESS, TBPF_NORMAL, TBPF_ERROR};
    list_->SetProgressState(window, kFlags[static_cast<int>(progress_.state)]);
    if (progress_.state == TaskProgress::State::kNone) return;
    list_->SetProgressValue(window, static_cast<ULONGLONG>(progress_.percent), 100);
  }

  ComReference<ITaskbarList3> list_;
  TaskProgress progress_;
  bool created_ = false;
};

}  // namespace platform
