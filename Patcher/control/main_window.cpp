#include "control/main_window.h"

#include <new>
#include <utility>

#include "control/page_content.h"
#include "control/protocol/page_messages.h"
#include "control/task_progress.h"
#include "control/window_geometry.h"
#include "shared/detached_thread.h"
#include "shared/program.h"

namespace patcher {

using platform::SizeKind;

MainWindow::MainWindow(OperationTable operations)
    : window_(*this),
      backlog_([this](const UiEvent& event) {
        return window_.Post({event.number, event.wParam, event.lParam});
      }),
      dispatcher_(*this, std::move(operations)),
      webViewHost_(window_, *this, dispatcher_) {}

bool MainWindow::Create() {
  const platform::WindowLook look{BuildWindowTitle(), kNavy, kIconResource};
  return window_.Create(look, PlaceWindow(platform::WorkAreaUnderPointer()));
}

int MainWindow::Run() {
  window_.Show();
  return window_.RunMessageLoop();
}

void MainWindow::PostEvent(const UiEvent& event) noexcept {
  try {
    backlog_.Post(event);
  } catch (const std::bad_alloc&) {
    ReleasePayload(event);
  }
}

void MainWindow::SendToPage(const std::u16string& text) { webViewHost_.SendToPage(text); }

void MainWindow::EndMessageLoop() { window_.Quit(0); }

void MainWindow::StartDragging() { window_.WatchPointer(drag_.Begin(window_.Pointer())); }

void MainWindow::Minimize() { window_.Minimize(); }

void MainWindow::ToggleMaximize() {
  if (window_.IsMaximized()) {
    window_.Restore();
  } else {
    window_.Maximize();
  }
}

void MainWindow::AskToClose() { window_.AskToClose(); }

void MainWindow::StartThread(std::function<void()> entry) { StartDetachedThread(std::move(entry)); }

void MainWindow::WindowCreated() { webViewHost_.StartWebView(); }

void MainWindow::WindowResized(SizeKind kind) {
  // A minimized window does not change the page's maximize button.
  if (kind == SizeKind::kMaximized || kind == SizeKind::kRestored) {
    SendToPage(BuildWindowMessage(kind == SizeKind::kMaximized));
  }
  webViewHost_.UpdateBounds();
}

void MainWindow::WindowMessage(const platform::QueueMessage& message) {
  const UiEvent event{message.number, message.wParam, message.lParam};
  if (event.number == kWebViewProcessDied) {
    webViewHost_.Recover(static_cast<platform::WebViewProcess>(event.wParam));
  } else {
    if (const auto progress = TaskProgressAfter(event)) window_.ShowProgress(*progress);
    dispatcher_.HandleUiEvent(event);
  }
  // Also here: while the system moves or sizes the window, the system's own loop processes the queue.
  backlog_.Advance();
}

void MainWindow::QueueAdvanced() { backlog_.Advance(); }

void MainWindow::PointerWatched(const platform::PointerState& pointer) {
  const WindowDrag::Step step = drag_.Follow(pointer);
  if (step == WindowDrag::Step::kWait) return;
  window_.WatchPointer(false);
  if (step != WindowDrag::Step::kMove) return;
  if (window_.IsMaximized()) {
    window_.RestoreTo(RestoreUnderPointer(window_.Place(), window_.RestoredSize(), pointer.position));
  }
  window_.StartMoving();
}

void MainWindow::WindowMoved() { webViewHost_.WindowMoved(); }

void MainWindow::WindowFocused() { webViewHost_.TakeFocus(); }

platform::Size MainWindow::MinimumWindowSize(const platform::Rect& workArea) const {
  return MinimumWindow(workArea);
}

platform::WindowPart MainWindow::HitTest(const platform::Rect& window, platform::Point point,
                                         bool maximized) const {
  return patcher::HitTest(window, point, maximized);
}

platform::MaximizedPlacement MainWindow::PlaceMaximized(const platform::Rect& monitor,
                                                        const platform::Rect& workArea) const {
  return patcher::PlaceMaximized(monitor, workArea);
}

platform::Rect MainWindow::ClientArea(const platform::Rect& window, bool maximized,
                                      platform::Size frame) const {
  return patcher::ClientArea(window, maximized, frame);
}

}  // namespace patcher
