#pragma once

#include <string>

#include "control/dispatch.h"
#include "control/recovery_limit.h"
#include "platform/web_view.h"
#include "platform/window.h"

namespace patcher {

/// A message of the web view host to itself. Its number lies above those of the workers. wParam:
/// platform::WebViewProcess.
inline constexpr std::uint32_t kWebViewProcessDied = 0x8101;

/// Brings the page into the window, carries its requests to the dispatcher and messages to it, serves its
/// images, starts the update run when it has loaded, and loads it again when its processes have died. Main
/// thread only.
class WebViewHost final : private platform::WebViewOwner {
 public:
  /// All three outlive the host. `events` gives kWebViewProcessDied back through Recover.
  WebViewHost(platform::NativeWindow& window, HostWindow& events, Dispatcher& dispatcher);

  /// Returns before anything has happened.
  void StartWebView();
  /// Dropped if there is no web view yet.
  void SendToPage(const std::u16string& text);
  void UpdateBounds();
  void WindowMoved();
  /// The page gets the keyboard.
  void TakeFocus();
  void Recover(platform::WebViewProcess died);

 private:
  platform::Rect Bounds() const override;
  std::optional<platform::ResourceAnswer> AnswerRequest(std::string_view address) override;
  bool MayNavigate(std::string_view address) override;
  void MessageReceived(std::u16string_view text) override;
  void NavigationCompleted() override;
  void ProcessDied(platform::WebViewProcess process) override;

  platform::NativeWindow& window_;
  HostWindow& events_;
  Dispatcher& dispatcher_;
  platform::WebView webView_;
  RecoveryLimit recoveryLimit_;
  bool pageLoaded_ = false;
};

}  // namespace patcher
