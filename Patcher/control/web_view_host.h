#pragma once

#include <string>

#include "control/dispatch.h"
#include "platform/web_view.h"
#include "platform/window.h"

namespace patcher {

/// Brings the page into the window, carries its requests to the dispatcher and messages to it, serves its
/// images, and starts the update run when it has loaded. Main thread only.
class WebViewHost final : private platform::WebViewOwner {
 public:
  /// Both outlive the host.
  WebViewHost(platform::NativeWindow& window, Dispatcher& dispatcher);

  /// Returns before anything has happened.
  void StartWebView();
  /// Dropped if there is no web view yet.
  void SendToPage(const std::u16string& text);
  void UpdateBounds();

 private:
  platform::Rect Bounds() const override;
  std::optional<platform::ResourceAnswer> AnswerRequest(std::string_view address) override;
  bool MayNavigate(std::string_view address) override;
  void MessageReceived(std::u16string_view text) override;
  void NavigationCompleted() override;

  platform::NativeWindow& window_;
  Dispatcher& dispatcher_;
  platform::WebView webView_;
  bool pageLoaded_ = false;
};

}  // namespace patcher
