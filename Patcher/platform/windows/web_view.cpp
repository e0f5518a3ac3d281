#include <windows.h>

#include "platform/web_view.h"

#include <objbase.h>
#include <shlwapi.h>

#include "platform/text.h"
#include "platform/window.h"
#include "platform/windows/com_reference.h"
#include "platform/windows/event_handler.h"

namespace platform {
namespace {

/// A string that the web view has allocated for its caller.
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

std::wstring Native(std::u16string_view text) { return {text.begin(), text.end()}; }

}  // namespace

// Every failure of a step ends the chain there, without a word: the window stays empty and can be closed.
struct WebView::Impl {
  explicit Impl(WebViewOwner& webViewOwner) : owner(webViewOwner) {}

  WebViewOwner& owner;
  HWND window = nullptr;
  WebViewContent content;
  ComReference<ICoreWebView2Environment> environment;
  ComReference<ICoreWebView2Controller> controller;
  ComReference<ICoreWebView2> view;

  void CreateEnvironment();
  void OnEnvironmentCreated(ICoreWebView2Environment* made);
  void OnControllerCreated(ICoreWebView2Controller* made);
  void ConnectPage();
  void KeepToThePage();
  void ServeAsset(ICoreWebView2WebResourceRequestedEventArgs* args);
  void OnMessage(ICoreWebView2WebMessageReceivedEventArgs* args);
  void OnNavigationStarting(ICoreWebView2NavigationStartingEventArgs* args);
  void PutBounds();
};

void WebView::Impl::CreateEnvironment() {
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
  if (made == nullptr) return;
  controller = ComReference<ICoreWebView2Controller>::Share(made);
  ComReference<ICoreWebView2> inside;
  controller->get_CoreWebView2(inside.Receive());
  if (!inside) return;
  view = std::move(inside);
  ConnectPage();
  KeepToThePage();
  // Last, so that neither a request nor the completion can be missed.
  view->NavigateToString(Native(content.page).c_str());
}

void WebView::Impl::ConnectPage() {
  const std::wstring pattern = Native(Utf8ToWide(content.assetOrigin)) + L"/*";
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
      [this](ICoreWebView2*, auto*) { owner.NavigationCompleted(); });
  view->add_NavigationCompleted(completed.Get(), &unused);
}

/// A file dropped on the window or a link must not put another document in the page's place: what is loaded
/// there may ask for everything that the page may.
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
      stream.Get(), 200, L"OK", Native(Utf8ToWide(answer->headers)).c_str(), response.Receive());
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
  if (!owner.MayNavigate(WideToUtf8(address.Wide()))) args->put_Cancel(TRUE);
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

void WebView::Deliver(const std::u16string& text) {
  if (impl_->view) impl_->view->PostWebMessageAsString(Native(text).c_str());
}

}  // namespace platform
