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

/// The answer to a request of the page. `content` stays valid for the life of the process.
struct ResourceAnswer {
  std::span<const std::byte> content;
  std::string mediaType;
  /// Header lines, CR LF between them and none at the end, the media type among them. Linux sends the media
  /// type only: its web view caches what comes from the program without such lines.
  std::string headers;
};

/// The processes without which there is no page.
enum class WebViewProcess {
  kBrowser,  ///< the web view itself (Windows)
  kPage,     ///< the one that runs the page
};

/// What the web view reports to and asks. Main thread only.
class WebViewOwner {
 public:
  virtual ~WebViewOwner() = default;

  /// Where the web view belongs, in the window's client coordinates.
  virtual Rect Bounds() const = 0;
  /// A request under the asset origin. Nothing leaves it without an answer: it fails.
  virtual std::optional<ResourceAnswer> AnswerRequest(std::string_view address) = 0;
  /// Whether the web view may go to this address (Windows; on Linux it goes to its page and nowhere else).
  virtual bool MayNavigate(std::string_view address) = 0;
  /// A string that the page posted; anything but a string is dropped below.
  virtual void MessageReceived(std::u16string_view text) = 0;
  /// The page has loaded, or failed to; again after each reload. Not after a navigation that was refused.
  virtual void NavigationCompleted() = 0;
  /// A process has died, and the page with it.
  virtual void ProcessDied(WebViewProcess process) = 0;
};

/// What a web view is given to start with.
struct WebViewContent {
  std::u16string page;         ///< the whole document
  std::string assetOrigin;     ///< scheme and host under which the page asks for its images
  std::filesystem::path data;  ///< folder for what the web view keeps on disk (Windows; Linux keeps nothing)
  Colour background;           ///< what shows until the page does (Windows; on Linux the window does)
};

/// A web view that shows one document inside the main window. The page finds `window.chrome.webview` with
/// `postMessage` and the event "message", cannot load another document and cannot open a window; on Linux it
/// cannot reach the network either. Main thread only. Never destroyed before the process ends.
class WebView {
 public:
  /// `owner` outlives the web view.
  explicit WebView(WebViewOwner& owner);
  ~WebView();
  WebView(const WebView&) = delete;
  WebView& operator=(const WebView&) = delete;

  /// Begins to bring the page into the window and returns at once. Where a step fails, for example because
  /// the system has no web view, nothing more happens, without a report.
  void Start(NativeWindow& window, const WebViewContent& content);
  /// Asks the owner for the bounds and takes them; nothing if there is no web view yet.
  void UpdateBounds();
  /// Loads the page again after a process has died. Not from within ProcessDied: the web view is not made for
  /// calls from there.
  void Recover(WebViewProcess died);
  /// Reports to the web view that the window has moved: its lists and menus are windows of their own. Linux:
  /// nothing.
  void WindowMoved();
  /// Gives the keyboard to the page; nothing if there is no web view yet. Linux: nothing, the toolkit does
  /// it.
  void TakeFocus();
  /// Delivers a text to the page as the data of a "message" event, or drops it if there is no web view yet.
  void Deliver(const std::u16string& text);

  struct Impl;

 private:
  std::unique_ptr<Impl> impl_;
};

}  // namespace platform
