#include "control/web_view_host.h"

#include "control/page_content.h"
#include "control/window_geometry.h"
#include "shared/own_files.h"
#include "shared/program.h"
#include "shared/site.h"

namespace patcher {

WebViewHost::WebViewHost(platform::NativeWindow& window, HostWindow& events, Dispatcher& dispatcher)
    : window_(window), events_(events), dispatcher_(dispatcher), webView_(*this) {}

void WebViewHost::StartWebView() {
  webView_.Start(window_, {PageText(), kAssetOrigin, ExeDir() / kWebViewDirectory, kNavy});
}

void WebViewHost::SendToPage(const std::u16string& text) { webView_.Deliver(text); }

void WebViewHost::UpdateBounds() { webView_.UpdateBounds(); }

void WebViewHost::WindowMoved() { webView_.WindowMoved(); }

void WebViewHost::TakeFocus() { webView_.TakeFocus(); }

platform::Rect WebViewHost::Bounds() const {
  return WebViewBounds(window_.ClientRect(), window_.IsMaximized());
}

std::optional<platform::ResourceAnswer> WebViewHost::AnswerRequest(std::string_view address) {
  return ServeAsset(address);
}

bool WebViewHost::MayNavigate(std::string_view address) {
  // The first navigation is the host's own. Web views give it different addresses.
  return !pageLoaded_ || IsOwnAddress(address);
}

void WebViewHost::MessageReceived(std::u16string_view text) { dispatcher_.DispatchPageMessage(text); }

void WebViewHost::NavigationCompleted() {
  pageLoaded_ = true;
  dispatcher_.NavigationCompleted();
}

void WebViewHost::ProcessDied(platform::WebViewProcess process) {
  events_.PostEvent({kWebViewProcessDied, static_cast<std::uintptr_t>(process)});
}

void WebViewHost::Recover(platform::WebViewProcess died) {
  if (!recoveryLimit_.Take(std::chrono::steady_clock::now())) return;
  pageLoaded_ = false;
  webView_.Recover(died);
}

}  // namespace patcher
