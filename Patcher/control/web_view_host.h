#pragma once

#include <string>

#include "control/dispatch.h"
#include "control/recovery_limit.h"
#include "platform/web_view.h"
#include "platform/window.h"

namespace patcher {

/// A message that the web view host posts to itself. Its number is above those of the workers' events.
/// wParam: platform::WebViewProcess.
inline constexpr std::uint32_t kWebViewProcessDied = 0x8101;

/// Shows the page in the window: passes its requests to the dispatcher and the dispatcher's messages to it,
/// serves its images, starts the update run when it has loaded, and reloads it when its processes have died.
/// Main thread only.
class WebViewHost final : private platform::WebViewOwner {
 public:
  /// All three outlive the host. The owner of `events` calls Recover when it receives kWebViewProcessDied.
  WebViewHost(platform::NativeWindow& window, HostWindow& events, Dispatcher& dispatcher);

  /// Starts to create the web view and returns at once.
  void StartWebView();
  /// Drops the message if there is no web view yet.
  void SendToPage(const std::u16string& text);
  void UpdateBounds();
  void WindowMoved();
  /// Gives the keyboard focus to the page.
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
