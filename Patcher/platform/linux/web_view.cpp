#include "platform/web_view.h"

#include <gtk/gtk.h>
#include <webkit2/webkit2.h>

#include "platform/text.h"
#include "platform/window.h"

namespace platform {
namespace {

// The web view cannot intercept https, so the page and its images use a custom scheme.
constexpr char kScheme[] = "launcher";
constexpr char kPageAddress[] = "launcher://page/";
constexpr char kAssetOrigin[] = "launcher://assets";

/// No program listens on this port: all network requests of the page fail.
constexpr char kDeadProxy[] = "http://127.0.0.1:1";

/// Runs before the page's own script.
constexpr char kBridge[] = R"(
(() => {
  const channel = window.webkit.messageHandlers.host;
  const view = new EventTarget();
  view.postMessage = (message) => channel.postMessage(message);
  Object.defineProperty(window, 'chrome', {value: {webview: view}});
})();
)";

constexpr char kDeliver[] = "window.chrome.webview.dispatchEvent(new MessageEvent('message', {data: text}));";

std::string ReplaceAll(std::string text, std::string_view from, std::string_view to) {
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
  return text;
}

void Answer(WebKitURISchemeRequest* request, std::span<const std::byte> content, const char* mediaType) {
  const auto size = static_cast<gssize>(content.size());
  GInputStream* stream = g_memory_input_stream_new_from_data(content.data(), size, nullptr);
  webkit_uri_scheme_request_finish(request, stream, size, mediaType);
  g_object_unref(stream);
}

}  // namespace

struct WebView::Impl {
  explicit Impl(WebViewOwner& webViewOwner) : owner(webViewOwner) {}

  WebViewOwner& owner;
  std::string page;
  WebKitWebView* view = nullptr;  // null again after the window is destroyed

  void CreateView(GtkContainer* window);
  void ConnectPage();

  static void OnRequest(WebKitURISchemeRequest* request, gpointer data);
  static void OnMessage(WebKitUserContentManager* manager, WebKitJavascriptResult* result, gpointer data);
  static void OnLoad(WebKitWebView* view, WebKitLoadEvent event, gpointer data);
  static void OnProcessEnded(WebKitWebView* view, WebKitWebProcessTerminationReason reason, gpointer data);
  static gboolean OnPolicy(WebKitWebView* view, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type,
                           gpointer data);
  static gboolean OnPermission(WebKitWebView* view, WebKitPermissionRequest* request, gpointer data);
  static void OnDownload(WebKitWebContext* context, WebKitDownload* download, gpointer data);
};

void WebView::Impl::CreateView(GtkContainer* window) {
  WebKitWebContext* context = webkit_web_context_new_ephemeral();
  webkit_web_context_set_cache_model(context, WEBKIT_CACHE_MODEL_DOCUMENT_VIEWER);
  webkit_web_context_register_uri_scheme(context, kScheme, &OnRequest, this, nullptr);
  g_signal_connect(context, "download-started", G_CALLBACK(&OnDownload), nullptr);
  WebKitNetworkProxySettings* proxy = webkit_network_proxy_settings_new(kDeadProxy, nullptr);
  webkit_website_data_manager_set_network_proxy_settings(webkit_web_context_get_website_data_manager(context),
                                                         WEBKIT_NETWORK_PROXY_MODE_CUSTOM, proxy);
  webkit_network_proxy_settings_free(proxy);
  view = WEBKIT_WEB_VIEW(webkit_web_view_new_with_context(context));
  g_object_unref(context);
  // The window's background shows until the page appears.
  const GdkRGBA transparent{0, 0, 0, 0};
  webkit_web_view_set_background_color(view, &transparent);
  gtk_container_add(window, GTK_WIDGET(view));
}

void WebView::Impl::ConnectPage() {
  WebKitUserContentManager* manager = webkit_web_view_get_user_content_manager(view);
  webkit_user_content_manager_register_script_message_handler(manager, "host");
  WebKitUserScript* bridge =
      webkit_user_script_new(kBridge, WEBKIT_USER_CONTENT_INJECT_TOP_FRAME,
                             WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_START, nullptr, nullptr);
  webkit_user_content_manager_add_script(manager, bridge);
  webkit_user_script_unref(bridge);
  g_signal_connect(manager, "script-message-received::host", G_CALLBACK(&OnMessage), this);
  g_signal_connect(view, "load-changed", G_CALLBACK(&OnLoad), this);
  g_signal_connect(view, "web-process-terminated", G_CALLBACK(&OnProcessEnded), this);
  g_signal_connect(view, "decide-policy", G_CALLBACK(&OnPolicy), this);
  g_signal_connect(view, "permission-request", G_CALLBACK(&OnPermission), this);
  g_signal_connect(view, "destroy", G_CALLBACK(gtk_widget_destroyed), &view);
}

void WebView::Impl::OnRequest(WebKitURISchemeRequest* request, gpointer data) {
  auto* self = static_cast<Impl*>(data);
  const std::string_view address = webkit_uri_scheme_request_get_uri(request);
  if (address == kPageAddress) {
    Answer(request, std::as_bytes(std::span(self->page)), "text/html");
    return;
  }
  const auto answer = address.starts_with(kAssetOrigin) ? self->owner.AnswerRequest(address) : std::nullopt;
  if (answer) {
    Answer(request, answer->content, answer->mediaType.c_str());
    return;
  }
  GError* error = g_error_new_literal(G_IO_ERROR, G_IO_ERROR_NOT_FOUND, "no such image");
  webkit_uri_scheme_request_finish_error(request, error);
  g_error_free(error);
}

void WebView::Impl::OnMessage(WebKitUserContentManager*, WebKitJavascriptResult* result, gpointer data) {
  JSCValue* value = webkit_javascript_result_get_js_value(result);
  if (!jsc_value_is_string(value)) return;
  char* text = jsc_value_to_string(value);
  static_cast<Impl*>(data)->owner.MessageReceived(Utf8ToWide(text));
  g_free(text);
}

void WebView::Impl::OnLoad(WebKitWebView*, WebKitLoadEvent event, gpointer data) {
  if (event == WEBKIT_LOAD_FINISHED) static_cast<Impl*>(data)->owner.NavigationCompleted();
}

void WebView::Impl::OnProcessEnded(WebKitWebView*, WebKitWebProcessTerminationReason, gpointer data) {
  static_cast<Impl*>(data)->owner.ProcessDied(WebViewProcess::kPage);
}

gboolean WebView::Impl::OnPolicy(WebKitWebView*, WebKitPolicyDecision* decision,
                                 WebKitPolicyDecisionType type, gpointer) {
  if (type == WEBKIT_POLICY_DECISION_TYPE_RESPONSE) return FALSE;
  WebKitNavigationAction* action =
      webkit_navigation_policy_decision_get_navigation_action(WEBKIT_NAVIGATION_POLICY_DECISION(decision));
  const char* address = webkit_uri_request_get_uri(webkit_navigation_action_get_request(action));
  const bool own = address != nullptr && std::string_view(address) == kPageAddress;
  if (type == WEBKIT_POLICY_DECISION_TYPE_NAVIGATION_ACTION && own) {
    webkit_policy_decision_use(decision);
  } else {
    webkit_policy_decision_ignore(decision);
  }
  return TRUE;
}

gboolean WebView::Impl::OnPermission(WebKitWebView*, WebKitPermissionRequest* request, gpointer) {
  webkit_permission_request_deny(request);
  return TRUE;
}

void WebView::Impl::OnDownload(WebKitWebContext*, WebKitDownload* download, gpointer) {
  webkit_download_cancel(download);
}

WebView::WebView(WebViewOwner& owner) : impl_(std::make_unique<Impl>(owner)) {}

WebView::~WebView() = default;

void WebView::Start(NativeWindow& window, const WebViewContent& content) {
  impl_->page = ReplaceAll(WideToUtf8(content.page), content.assetOrigin, kAssetOrigin);
  impl_->CreateView(GTK_CONTAINER(window.Handle()));
  impl_->ConnectPage();
  UpdateBounds();
  webkit_web_view_load_uri(impl_->view, kPageAddress);
}

void WebView::UpdateBounds() {
  if (impl_->view == nullptr) return;
  // The view fills the window except for its margins; the layout follows the window's size.
  const Rect bounds = impl_->owner.Bounds();
  GtkWidget* view = GTK_WIDGET(impl_->view);
  const int margin = bounds.left;
  if (gtk_widget_get_margin_start(view) == margin) return;
  gtk_widget_set_margin_start(view, margin);
  gtk_widget_set_margin_end(view, margin);
  gtk_widget_set_margin_top(view, margin);
  gtk_widget_set_margin_bottom(view, margin);
}

void WebView::Recover(WebViewProcess) {
  if (impl_->view != nullptr) webkit_web_view_load_uri(impl_->view, kPageAddress);
}

void WebView::WindowMoved() {}

void WebView::TakeFocus() {}

void WebView::Deliver(const std::u16string& text) {
  if (impl_->view == nullptr) return;
  GVariantBuilder arguments;
  g_variant_builder_init(&arguments, G_VARIANT_TYPE_VARDICT);
  g_variant_builder_add(&arguments, "{sv}", "text", g_variant_new_string(WideToUtf8(text).c_str()));
  webkit_web_view_call_async_javascript_function(impl_->view, kDeliver, -1, g_variant_builder_end(&arguments),
                                                 nullptr, nullptr, nullptr, nullptr, nullptr);
}

}  // namespace platform
