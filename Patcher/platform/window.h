#pragma once

#include <memory>
#include <string>

#include "platform/colour.h"
#include "platform/geometry.h"
#include "platform/message_queue.h"

namespace platform {

/// State of a window after a size change.
enum class SizeKind { kRestored, kMinimized, kMaximized, kOther };

/// The part of a window at a point. The values are the hit-test codes of Windows.
enum class WindowPart {
  kClient = 1,
  kLeft = 10,
  kRight = 11,
  kTop = 12,
  kTopLeft = 13,
  kTopRight = 14,
  kBottom = 15,
  kBottomLeft = 16,
  kBottomRight = 17,
};

/// The place and size of a maximized window, relative to its monitor.
struct MaximizedPlacement {
  Point position;
  Size size;
  bool operator==(const MaximizedPlacement&) const = default;
};

/// State of the pointing device.
struct PointerState {
  Point position;  ///< screen coordinates
  // The physical buttons. Linux: as assigned by the player's settings, and never swapped.
  bool leftDown = false;
  bool rightDown = false;
  bool swapped = false;  ///< the right button is the primary one
  Size dragDistance;     ///< movement with a pressed button, in either direction, that starts a drag
};

/// Progress on the program's task bar button.
struct TaskProgress {
  enum class State { kNone, kNormal, kError };
  State state = State::kNone;
  int percent = 0;  ///< 0 to 100
  bool operator==(const TaskProgress&) const = default;
};

/// Callbacks of the window. Main thread only.
class WindowOwner {
 public:
  virtual ~WindowOwner() = default;

  /// The window exists and is not shown yet.
  virtual void WindowCreated() = 0;
  virtual void WindowResized(SizeKind kind) = 0;
  /// A message that was posted with NativeWindow::Post.
  virtual void WindowMessage(const QueueMessage& message) = 0;
  /// The main loop has removed a message from its queue: a refused post may now succeed.
  virtual void QueueAdvanced() = 0;
  /// Called repeatedly while the pointer is watched. Never called during an event of the web view.
  virtual void PointerWatched(const PointerState& pointer) = 0;

  // Windows only; on Linux the toolkit notifies the web view.

  /// The window has moved or is about to move on the screen.
  virtual void WindowMoved() = 0;
  /// The window has the keyboard focus now.
  virtual void WindowFocused() = 0;

  /// The smallest window size on a monitor with this work area. Linux: called once, for the monitor on which
  /// the window opens.
  virtual Size MinimumWindowSize(const Rect& workArea) const = 0;
  /// `window` and `point` are in screen coordinates.
  virtual WindowPart HitTest(const Rect& window, Point point, bool maximized) const = 0;

  // Called on Windows only; on Linux the window manager keeps a maximized window within the work area, and a
  // window without decorations has no frame.

  virtual MaximizedPlacement PlaceMaximized(const Rect& monitor, const Rect& workArea) const = 0;
  /// The client area of a window with the outer rectangle `window`; `frame` is the system's thickness of a
  /// resizable frame.
  virtual Rect ClientArea(const Rect& window, bool maximized, Size frame) const = 0;
};

/// Prepares the process and its main thread, which calls this, for a window: physical pixels and, for the web
/// view, a single-threaded apartment. Returns false if there is no screen (Linux).
[[nodiscard]] bool PrepareWindowSystem(int argc, char** argv);
/// Undoes PrepareWindowSystem for the thread. Call it after the main loop.
void FinishWindowSystem();

/// The area without task bars of the monitor under the pointer, else of the primary monitor.
Rect WorkAreaUnderPointer();

/// Look of a main window before the page is shown.
struct WindowLook {
  std::u16string title;
  Colour background;
  /// Resource number of the icon for task bars (Linux; Windows uses the program's icon).
  int icon = 0;
};

/// The program's main window and its main loop. A top-level window without caption or visible frame that can
/// be resized. Created once; lives until the process ends. Main thread only, except Post.
class NativeWindow {
 public:
  /// `owner` must outlive the window.
  explicit NativeWindow(WindowOwner& owner);
  ~NativeWindow();
  NativeWindow(const NativeWindow&) = delete;
  NativeWindow& operator=(const NativeWindow&) = delete;

  /// Calls WindowCreated before it returns. Returns false if the system cannot create a window.
  [[nodiscard]] bool Create(const WindowLook& look, const Rect& placement);
  /// Shows the window. Windows: with the show command of the process that started this one.
  void Show();

  /// Any thread; never blocks. Messages are handled in the order of posting. Returns false if the message was
  /// not queued: Windows queues at most 10,000 messages for a thread and none for a destroyed window.
  [[nodiscard]] bool Post(const QueueMessage& message) noexcept;
  /// Handles the thread's messages and events until Quit, or until the window is destroyed (code 0).
  int RunMessageLoop();
  /// Ends the loop after the current message.
  void Quit(int code);

  bool IsMaximized() const;
  /// The client area; left and top are 0.
  Rect ClientRect() const;

  /// The window on the screen.
  Rect Place() const;
  /// The window's size when it is neither maximized nor minimized.
  Size RestoredSize() const;

  PointerState Pointer() const;
  /// Starts or stops calls of PointerWatched: about every 10 ms on Windows; on Linux when the pointer moves
  /// with the button down, and when the button is released.
  void WatchPointer(bool watch);
  /// Lets the system move the window with the pointer until the primary button is released. Windows: returns
  /// then. Linux: returns immediately. Call only from PointerWatched.
  void StartMoving();

  void Minimize();
  void Maximize();
  void Restore();
  /// Restores a maximized window to this place on the screen. Does nothing under Wayland: the compositor
  /// restores a window when it is moved.
  void RestoreTo(const Rect& place);
  /// Linux: does nothing, because its task bars have no common interface for progress.
  void ShowProgress(const TaskProgress& progress);
  /// Queues a normal close request, which destroys the window.
  void AskToClose();

  /// The system's window (HWND or GtkWindow*), for other code of the seam. Null before Create.
  void* Handle() const;

  struct Impl;

 private:
  std::unique_ptr<Impl> impl_;
};

}  // namespace platform
