#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "platform/colour.h"
#include "platform/geometry.h"

namespace platform {

class NativeWindow;

/// The response to a request of the page. `content` must stay valid for the life of the process.
struct ResourceAnswer {
  std::span<const std::byte> content;
  std::string mediaType;
  /// Header lines separated by CR LF, without one at the end; they include the media type. Linux sends only
  /// the media type: its web view caches the program's responses without further headers.
  std::string headers;
};

/// The processes that the page needs.
enum class WebViewProcess {
  kBrowser,  ///< the web view itself (Windows)
  kPage,     ///< the process that runs the page
};

/// Callbacks of the web view. Main thread only.
class WebViewOwner {
 public:
  virtual ~WebViewOwner() = default;

  /// Place of the web view in the window's client coordinates.
  virtual Rect Bounds() const = 0;
  /// A request under the asset origin. It fails if this returns nothing.
  virtual std::optional<ResourceAnswer> AnswerRequest(std::string_view address) = 0;
  /// Whether the web view may navigate to this address (Windows; on Linux it can only show its page).
  virtual bool MayNavigate(std::string_view address) = 0;
  /// A string that the page posted. Messages of other types are dropped before this.
  virtual void MessageReceived(std::u16string_view text) = 0;
  /// The page has loaded or failed to load. Also called after each reload, but not after a refused
  /// navigation.
  virtual void NavigationCompleted() = 0;
  /// A process has died; the page is gone.
  virtual void ProcessDied(WebViewProcess process) = 0;
};

/// Start settings of a web view.
struct WebViewContent {
  std::u16string page;         ///< the whole document
  std::string assetOrigin;     ///< scheme and host under which the page asks for its images
  std::filesystem::path data;  ///< folder for the web view's own files (Windows; Linux has none)
  Colour background;           ///< shown until the page appears (Windows; Linux shows the window)
};

/// A web view that shows one document inside the main window. The page finds `window.chrome.webview` with
/// `postMessage` and the event "message", cannot load another document and cannot open a window; on Linux it
/// cannot reach the network either. Main thread only. Lives until the process ends.
class WebView {
 public:
  /// `owner` must outlive the web view.
  explicit WebView(WebViewOwner& owner);
  ~WebView();
  WebView(const WebView&) = delete;
  WebView& operator=(const WebView&) = delete;

  /// Starts to load the page into the window and returns immediately. If a step fails, for example because
  /// the system has no web view, loading stops without an error report.
  void Start(NativeWindow& window, const WebViewContent& content);
  /// Applies the owner's Bounds(). Does nothing if there is no web view yet.
  void UpdateBounds();
  /// Loads the page again after a process has died. Must not be called from ProcessDied: the web view does
  /// not support calls from there.
  void Recover(WebViewProcess died);
  /// Notifies the web view that the window has moved, because its lists and menus are separate windows.
  /// Linux: does nothing.
  void WindowMoved();
  /// Gives the page the keyboard focus. Does nothing if there is no web view yet, and on Linux, where the
  /// toolkit does it.
  void TakeFocus();
  /// Sends a text to the page as the data of a "message" event. Drops it if there is no web view yet.
  void Deliver(const std::u16string& text);

  struct Impl;

 private:
  std::unique_ptr<Impl> impl_;
};

}  // namespace platform
