#pragma once

#include <memory>
#include <string>

#include "platform/colour.h"
#include "platform/geometry.h"
#include "platform/message_queue.h"

namespace platform {

/// The state of a window after its size has changed.
enum class SizeKind { kRestored, kMinimized, kMaximized, kOther };

/// What lies under a point of a window. The numbers are the hit codes of Windows.
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

/// The pointing device at one moment.
struct PointerState {
  Point position;  ///< screen coordinates
  // The buttons of the device. Linux: as the player's settings assign them, and never swapped.
  bool leftDown = false;
  bool rightDown = false;
  bool swapped = false;  ///< the right button is the primary one
  Size dragDistance;     ///< how far a pressed pointer moves, in either direction, before that is a drag
};

/// What the program's button on the task bar shows.
struct TaskProgress {
  enum class State { kNone, kNormal, kError };
  State state = State::kNone;
  int percent = 0;  ///< 0 to 100
  bool operator==(const TaskProgress&) const = default;
};

/// What the window reports to and asks. Main thread only.
class WindowOwner {
 public:
  virtual ~WindowOwner() = default;

  /// The window exists and is not shown yet.
  virtual void WindowCreated() = 0;
  virtual void WindowResized(SizeKind kind) = 0;
  /// A message that was posted with NativeWindow::Post.
  virtual void WindowMessage(const QueueMessage& message) = 0;
  /// The main loop has taken a message off its queue: a post that was refused may succeed now.
  virtual void QueueAdvanced() = 0;
  /// The pointer, again and again while it is watched. Never called from within an event of the web view.
  virtual void PointerWatched(const PointerState& pointer) = 0;

  // Windows only; on Linux the toolkit keeps the web view informed.

  /// The window has moved on the screen, or is about to.
  virtual void WindowMoved() = 0;
  /// The window has got the keyboard.
  virtual void WindowFocused() = 0;

  /// How small the player may make the window on a monitor with this work area. Linux: asked once, for the
  /// monitor on which the window opens.
  virtual Size MinimumWindowSize(const Rect& workArea) const = 0;
  /// `window` and `point` in screen coordinates.
  virtual WindowPart HitTest(const Rect& window, Point point, bool maximized) const = 0;

  // Asked on Windows only; on Linux the window manager keeps a maximized window on the work area, and a
  // window without decorations has no frame.

  virtual MaximizedPlacement PlaceMaximized(const Rect& monitor, const Rect& workArea) const = 0;
  /// The client area of a window that takes up `window`; `frame` is the system's thickness of a frame that
  /// can be sized.
  virtual Rect ClientArea(const Rect& window, bool maximized, Size frame) const = 0;
};

/// Prepares this process and the calling thread, the main thread, for a window: the window works in real
/// pixels, and the web view finds the single-threaded apartment it needs. False if there is no screen
/// (Linux).
[[nodiscard]] bool PrepareWindowSystem(int argc, char** argv);
/// Undoes what PrepareWindowSystem did for the thread. Called when the main loop has ended.
void FinishWindowSystem();

/// The part of the monitor under the pointer, else of the primary one, that task bars leave free.
Rect WorkAreaUnderPointer();

/// What a main window looks like before anything is drawn in it.
struct WindowLook {
  std::u16string title;
  Colour background;
  /// Number of the embedded picture that task bars show (Linux; Windows takes the program's icon).
  int icon = 0;
};

/// The program's one main window: top-level, without caption or visible frame, yet sizable, with the main
/// loop that serves it. Made once and never destroyed before the process ends. Main thread only, but for
/// Post.
class NativeWindow {
 public:
  /// `owner` outlives the window.
  explicit NativeWindow(WindowOwner& owner);
  ~NativeWindow();
  NativeWindow(const NativeWindow&) = delete;
  NativeWindow& operator=(const NativeWindow&) = delete;

  /// Calls WindowCreated before it returns. False if the system gives no window.
  [[nodiscard]] bool Create(const WindowLook& look, const Rect& placement);
  /// Shows the window, on Windows in the way that the program which started this process asked for.
  void Show();

  /// Any thread; never blocks. Messages are handled in the order of posting. False if the message was not
  /// taken: Windows holds at most 10,000 for a thread, and none for a window that is gone.
  [[nodiscard]] bool Post(const QueueMessage& message) noexcept;
  /// Handles everything that concerns the thread until Quit or until the window is destroyed (code 0).
  int RunMessageLoop();
  /// Ends the loop after the present message.
  void Quit(int code);

  bool IsMaximized() const;
  /// The inside of the window; left and top are 0.
  Rect ClientRect() const;

  /// The window on the screen.
  Rect Place() const;
  /// The size that the window has when it is neither maximized nor minimized.
  Size RestoredSize() const;

  PointerState Pointer() const;
  /// Begins or ends to report the pointer to the owner: about every 10 ms on Windows, on Linux when it moves
  /// or the button goes up.
  void WatchPointer(bool watch);
  /// The system moves the window with the pointer until the primary button is released. Windows: returns
  /// then; Linux: returns at once. Only from within PointerWatched.
  void StartMoving();

  void Minimize();
  void Maximize();
  void Restore();
  /// Restores a maximized window, to this place on the screen. Linux under Wayland: nothing, since the
  /// compositor restores a window that is moved.
  void RestoreTo(const Rect& place);
  /// Linux: nothing, its task bars have no common way to show it.
  void ShowProgress(const TaskProgress& progress);
  /// Queues an ordinary close request, which destroys the window.
  void AskToClose();

  /// The system's window, for other halves of the seam: HWND or GtkWindow*. Null before Create.
  void* Handle() const;

  struct Impl;

 private:
  std::unique_ptr<Impl> impl_;
};

}  // namespace platform
