#include <windows.h>

#include "platform/web_view.h"

#include <cwchar>
#include <set>

#include <objbase.h>
#include <shlwapi.h>

#include "platform/text.h"
#include "platform/window.h"
#include "platform/windows/com_reference.h"
#include "platform/windows/event_handler.h"
#include "platform/windows/native_text.h"

namespace platform {
namespace {

/// Owns a string that the web view allocated.
class TaskString {
 public:
  TaskString() = default;
  ~TaskString() { CoTaskMemFree(text_); }
  TaskString(const TaskString&) = delete;
  TaskString& operator=(const TaskString&) = delete;

  wchar_t** Receive() { return &text_; }
  explicit operator bool() const { return text_ != nullptr; }
  std::u16string Wide() const {
    const std::wstring_view text(text_);
    return {text.begin(), text.end()};
  }

 private:
  wchar_t* text_ = nullptr;
};

/// The web view reads its background colour from this variable when it is created. Setting it later would
/// cause a white flash.
constexpr wchar_t kBackgroundVariable[] = L"WEBVIEW2_DEFAULT_BACKGROUND_COLOR";

}  // namespace

// A failed step ends the chain without an error report: the window stays empty and can be closed.
struct WebView::Impl {
  explicit Impl(WebViewOwner& webViewOwner) : owner(webViewOwner) {}

  WebViewOwner& owner;
  HWND window = nullptr;
  WebViewContent content;
  ComReference<ICoreWebView2Environment> environment;
  ComReference<ICoreWebView2Controller> controller;
  ComReference<ICoreWebView2> view;
  std::set<UINT64> refused;  // refused navigations that have not completed yet

  void CreateEnvironment();
  void OnEnvironmentCreated(ICoreWebView2Environment* made);
  void OnControllerCreated(ICoreWebView2Controller* made);
  void ConnectPage();
  void KeepToThePage();
  void WatchProcesses();
  void LoadPage();
  void FocusPage();
  void ServeAsset(ICoreWebView2WebResourceRequestedEventArgs* args);
  void OnMessage(ICoreWebView2WebMessageReceivedEventArgs* args);
  void OnNavigationStarting(ICoreWebView2NavigationStartingEventArgs* args);
  void OnNavigationCompleted(ICoreWebView2NavigationCompletedEventArgs* args);
  void OnProcessFailed(ICoreWebView2ProcessFailedEventArgs* args);
  void PutBounds();
};

void WebView::Impl::CreateEnvironment() {
  wchar_t colour[16];
  const Colour& background = content.background;
  std::swprintf(colour, std::size(colour), L"FF%02X%02X%02X", background.red, background.green,
                background.blue);
  SetEnvironmentVariableW(kBackgroundVariable, colour);
  const auto created = MakeHandler<ICoreWebView2CreateCoreWebView2EnvironmentCompletedHandler>(
      [this](HRESULT, auto* made) { OnEnvironmentCreated(made); });
  CreateCoreWebView2EnvironmentWithOptions(nullptr, content.data.c_str(), nullptr, created.Get());
}

void WebView::Impl::OnEnvironmentCreated(ICoreWebView2Environment* made) {
  if (made == nullptr) return;
  environment = ComReference<ICoreWebView2Environment>::Share(made);
  const auto created = MakeHandler<ICoreWebView2CreateCoreWebView2ControllerCompletedHandler>(
      [this](HRESULT, auto* controllerMade) { OnControllerCreated(controllerMade); });
  environment->CreateCoreWebView2Controller(window, created.Get());
}

void WebView::Impl::OnControllerCreated(ICoreWebView2Controller* made) {
  // The web view has read it. The game and other programs must not inherit it.
  SetEnvironmentVariableW(kBackgroundVariable, nullptr);
  if (made == nullptr) return;
  controller = ComReference<ICoreWebView2Controller>::Share(made);
  ComReference<ICoreWebView2> inside;
  controller->get_CoreWebView2(inside.Receive());
  if (!inside) return;
  view = std::move(inside);
  ConnectPage();
  KeepToThePage();
  WatchProcesses();
  // Load last, after all handlers are registered.
  LoadPage();
  if (GetForegroundWindow() == window) FocusPage();
}

void WebView::Impl::LoadPage() { view->NavigateToString(ToNative(content.page).c_str()); }

void WebView::Impl::FocusPage() { controller->MoveFocus(COREWEBVIEW2_MOVE_FOCUS_REASON_PROGRAMMATIC); }

void WebView::Impl::ConnectPage() {
  const std::wstring pattern = ToNative(Utf8ToWide(content.assetOrigin)) + L"/*";
  view->AddWebResourceRequestedFilter(pattern.c_str(), COREWEBVIEW2_WEB_RESOURCE_CONTEXT_ALL);
  EventRegistrationToken unused{};
  const auto requested = MakeHandler<ICoreWebView2WebResourceRequestedEventHandler>(
      [this](ICoreWebView2*, auto* args) { ServeAsset(args); });
  view->add_WebResourceRequested(requested.Get(), &unused);
  PutBounds();
  const auto received = MakeHandler<ICoreWebView2WebMessageReceivedEventHandler>(
      [this](ICoreWebView2*, auto* args) { OnMessage(args); });
  view->add_WebMessageReceived(received.Get(), &unused);
  const auto completed = MakeHandler<ICoreWebView2NavigationCompletedEventHandler>(
      [this](ICoreWebView2*, auto* args) { OnNavigationCompleted(args); });
  view->add_NavigationCompleted(completed.Get(), &unused);
}

/// A link or a dropped file must not replace the page: another document could send the same requests as the
/// page.
void WebView::Impl::KeepToThePage() {
  EventRegistrationToken unused{};
  const auto starting = MakeHandler<ICoreWebView2NavigationStartingEventHandler>(
      [this](ICoreWebView2*, auto* args) { OnNavigationStarting(args); });
  view->add_NavigationStarting(starting.Get(), &unused);
  const auto newWindow =
      MakeHandler<ICoreWebView2NewWindowRequestedEventHandler>([](ICoreWebView2*, auto* args) {
        if (args != nullptr) args->put_Handled(TRUE);
      });
  view->add_NewWindowRequested(newWindow.Get(), &unused);
}

void WebView::Impl::WatchProcesses() {
  EventRegistrationToken unused{};
  const auto failed = MakeHandler<ICoreWebView2ProcessFailedEventHandler>(
      [this](ICoreWebView2*, auto* args) { OnProcessFailed(args); });
  view->add_ProcessFailed(failed.Get(), &unused);
}

void WebView::Impl::ServeAsset(ICoreWebView2WebResourceRequestedEventArgs* args) {
  if (args == nullptr || !environment) return;
  ComReference<ICoreWebView2WebResourceRequest> request;
  TaskString address;
  if (FAILED(args->get_Request(request.Receive())) || !request) return;
  if (FAILED(request->get_Uri(address.Receive())) || !address) return;
  const std::optional<ResourceAnswer> answer = owner.AnswerRequest(WideToUtf8(address.Wide()));
  if (!answer) return;
  const auto stream = ComReference<IStream>::Adopt(SHCreateMemStream(
      reinterpret_cast<const BYTE*>(answer->content.data()), static_cast<UINT>(answer->content.size())));
  if (!stream) return;
  ComReference<ICoreWebView2WebResourceResponse> response;
  const HRESULT result = environment->CreateWebResourceResponse(
      stream.Get(), 200, L"OK", ToNative(Utf8ToWide(answer->headers)).c_str(), response.Receive());
  if (SUCCEEDED(result) && response) args->put_Response(response.Get());
}

void WebView::Impl::OnMessage(ICoreWebView2WebMessageReceivedEventArgs* args) {
  TaskString text;
  if (args == nullptr || FAILED(args->TryGetWebMessageAsString(text.Receive())) || !text) return;
  owner.MessageReceived(text.Wide());
}

void WebView::Impl::OnNavigationStarting(ICoreWebView2NavigationStartingEventArgs* args) {
  TaskString address;
  if (args == nullptr || FAILED(args->get_Uri(address.Receive())) || !address) return;
  if (owner.MayNavigate(WideToUtf8(address.Wide()))) return;
  args->put_Cancel(TRUE);
  UINT64 id = 0;
  if (SUCCEEDED(args->get_NavigationId(&id))) refused.insert(id);
}

void WebView::Impl::OnNavigationCompleted(ICoreWebView2NavigationCompletedEventArgs* args) {
  // A refused navigation also completes; ignore that, because the page has not changed.
  UINT64 id = 0;
  if (args != nullptr && SUCCEEDED(args->get_NavigationId(&id)) && refused.erase(id) > 0) return;
  owner.NavigationCompleted();
}

void WebView::Impl::OnProcessFailed(ICoreWebView2ProcessFailedEventArgs* args) {
  COREWEBVIEW2_PROCESS_FAILED_KIND kind{};
  if (args == nullptr || FAILED(args->get_ProcessFailedKind(&kind))) return;
  // Ignore other failures: the web view restarts its other processes itself, and a page that does not respond
  // may only be waiting for a busy machine.
  if (kind == COREWEBVIEW2_PROCESS_FAILED_KIND_BROWSER_PROCESS_EXITED) {
    owner.ProcessDied(WebViewProcess::kBrowser);
  } else if (kind == COREWEBVIEW2_PROCESS_FAILED_KIND_RENDER_PROCESS_EXITED) {
    owner.ProcessDied(WebViewProcess::kPage);
  }
}

void WebView::Impl::PutBounds() {
  const Rect bounds = owner.Bounds();
  controller->put_Bounds({bounds.left, bounds.top, bounds.right, bounds.bottom});
}

WebView::WebView(WebViewOwner& owner) : impl_(std::make_unique<Impl>(owner)) {}

WebView::~WebView() = default;

void WebView::Start(NativeWindow& window, const WebViewContent& content) {
  impl_->window = static_cast<HWND>(window.Handle());
  impl_->content = content;
  impl_->CreateEnvironment();
}

void WebView::UpdateBounds() {
  if (impl_->controller) impl_->PutBounds();
}

void WebView::Recover(WebViewProcess died) {
  if (died == WebViewProcess::kPage) {
    if (impl_->view) impl_->LoadPage();
    return;
  }
  // These objects are unusable after the browser process has exited.
  impl_->view = {};
  impl_->controller = {};
  impl_->environment = {};
  impl_->refused.clear();
  impl_->CreateEnvironment();
}

void WebView::WindowMoved() {
  if (impl_->controller) impl_->controller->NotifyParentWindowPositionChanged();
}

void WebView::TakeFocus() {
  if (impl_->controller) impl_->FocusPage();
}

void WebView::Deliver(const std::u16string& text) {
  if (impl_->view) impl_->view->PostWebMessageAsString(ToNative(text).c_str());
}

}  // namespace platform
