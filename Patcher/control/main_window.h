#pragma once

#include <functional>
#include <string>

#include "control/dispatch.h"
#include "control/host_operations.h"
#include "control/protocol/event_backlog.h"
#include "control/web_view_host.h"
#include "control/window_drag.h"
#include "platform/window.h"

namespace patcher {

/// The launcher's main window: a frameless window that the page fills. It receives every UiEvent. Main thread
/// only, except PostEvent. Never destroyed, since workers may outlive the message loop.
class MainWindow final : public HostOperations, private platform::WindowOwner {
 public:
  explicit MainWindow(OperationTable operations);

  /// Creates the window, centred on the monitor under the pointer, and starts to load the page into it. False
  /// if the window cannot be created.
  bool Create();
  /// Shows the window and runs its message loop until the launcher ends. Returns the exit code.
  int Run();

  void PostEvent(const UiEvent& event) noexcept override;
  void SendToPage(const std::u16string& text) override;
  void EndMessageLoop() override;
  void StartDragging() override;
  void Minimize() override;
  void ToggleMaximize() override;
  void AskToClose() override;
  void StartThread(std::function<void()> entry) override;

 private:
  void WindowCreated() override;
  void WindowResized(platform::SizeKind kind) override;
  void WindowMessage(const platform::QueueMessage& message) override;
  void QueueAdvanced() override;
  void PointerWatched(const platform::PointerState& pointer) override;
  void WindowMoved() override;
  void WindowFocused() override;
  platform::Size MinimumWindowSize(const platform::Rect& workArea) const override;
  platform::WindowPart HitTest(const platform::Rect& window, platform::Point point,
                               bool maximized) const override;
  platform::MaximizedPlacement PlaceMaximized(const platform::Rect& monitor,
                                              const platform::Rect& workArea) const override;
  platform::Rect ClientArea(const platform::Rect& window, bool maximized,
                            platform::Size frame) const override;

  platform::NativeWindow window_;
  EventBacklog backlog_;
  Dispatcher dispatcher_;
  WebViewHost webViewHost_;
  WindowDrag drag_;
};

}  // namespace patcher
