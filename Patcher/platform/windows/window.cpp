#include <windows.h>

#include "platform/window.h"

#include <climits>
#include <memory>
#include <type_traits>

#include <dwmapi.h>
#include <objbase.h>

#include "platform/windows/native_text.h"
#include "platform/windows/taskbar_button.h"

namespace platform {
namespace {

constexpr wchar_t kWindowClass[] = L"TolmiraMMOPatcherWnd";
constexpr DWORD kStyle =
    WS_POPUP | WS_CLIPCHILDREN | WS_SYSMENU | WS_THICKFRAME | WS_MINIMIZEBOX | WS_MAXIMIZEBOX;

/// Resource number of the program's icon.
constexpr int kIcon = 1;
constexpr UINT_PTR kPointerTimer = 1;
/// Undocumented system messages that draw a themed frame over the window.
constexpr UINT kDrawThemedCaption = 0x00AE;
constexpr UINT kDrawThemedFrame = 0x00AF;

struct IconDeleter {
  void operator()(HICON icon) const { DestroyIcon(icon); }
};
using OwnedIcon = std::unique_ptr<std::remove_pointer_t<HICON>, IconDeleter>;

OwnedIcon LoadIconOfSize(int width, int height) {
  return OwnedIcon(static_cast<HICON>(LoadImageW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(kIcon),
                                                 IMAGE_ICON, width, height, LR_DEFAULTCOLOR)));
}

/// A device context for the frame of a window: everything outside the client area.
class FrameDrawing {
 public:
  explicit FrameDrawing(HWND window) : window_(window) {
    RECT client{};
    GetClientRect(window, &client);
    MapWindowPoints(window, nullptr, reinterpret_cast<POINT*>(&client), 2);
    const HRGN inside = CreateRectRgnIndirect(&client);
    context_ = GetDCEx(window, inside, DCX_WINDOW | DCX_CACHE | DCX_EXCLUDERGN);
    if (context_ == nullptr) DeleteObject(inside);  // otherwise the system owns it
  }
  ~FrameDrawing() {
    if (context_ != nullptr) ReleaseDC(window_, context_);
  }
  FrameDrawing(const FrameDrawing&) = delete;
  FrameDrawing& operator=(const FrameDrawing&) = delete;
  HDC Context() const { return context_; }

 private:
  HWND window_;
  HDC context_;
};

Rect Portable(const RECT& rect) { return {rect.left, rect.top, rect.right, rect.bottom}; }

RECT Native(const Rect& rect) { return {rect.left, rect.top, rect.right, rect.bottom}; }

SizeKind KindOf(WPARAM kind) {
  switch (kind) {
    case SIZE_RESTORED:
      return SizeKind::kRestored;
    case SIZE_MINIMIZED:
      return SizeKind::kMinimized;
    case SIZE_MAXIMIZED:
      return SizeKind::kMaximized;
    default:
      return SizeKind::kOther;
  }
}

/// The show command from the process that started this one.
int ShowCommand() {
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  GetStartupInfoW(&startup);
  return (startup.dwFlags & STARTF_USESHOWWINDOW) != 0 ? startup.wShowWindow : SW_SHOWDEFAULT;
}

}  // namespace

struct NativeWindow::Impl {
  explicit Impl(WindowOwner& windowOwner) : owner(windowOwner) {}

  WindowOwner& owner;
  HWND window = nullptr;
  OwnedIcon largeIcon;
  OwnedIcon smallIcon;
  TaskbarButton taskbarButton;
  bool paintsFrame = false;

  /// For the window procedure; there is only one window.
  static inline Impl* main = nullptr;

  LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam);
  LRESULT HandleFrame(UINT message, WPARAM wParam, LPARAM lParam) const;
  LRESULT HandleOther(UINT message, WPARAM wParam, LPARAM lParam);
  void OnSize(SizeKind kind);
  void ShowIcons();
  void PaintFrame() const;
  void FillMinMaxInfo(MINMAXINFO& info) const;
  void CalculateClientArea(NCCALCSIZE_PARAMS& parameters) const;
  WindowPart HitTest(LPARAM point) const;
  void TakePlace(const RECT& place) const;
  static PointerState PointerNow();
};

namespace {

LRESULT CALLBACK HostWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  NativeWindow::Impl& self = *NativeWindow::Impl::main;
  // Set once, before workers exist: they read it in Post.
  if (self.window == nullptr) self.window = window;
  return self.Handle(message, wParam, lParam);
}

}  // namespace

LRESULT NativeWindow::Impl::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_CREATE:
      owner.WindowCreated();
      return 0;
    case WM_DESTROY:
      PostQuitMessage(0);
      return 0;
    case WM_SIZE:
      OnSize(KindOf(wParam));
      return 0;
    case WM_MOVE:
    case WM_MOVING:
      owner.WindowMoved();
      return DefWindowProcW(window, message, wParam, lParam);
    case WM_SETFOCUS:
      owner.WindowFocused();
      return DefWindowProcW(window, message, wParam, lParam);
    case WM_TIMER:
      if (wParam == kPointerTimer) owner.PointerWatched(PointerNow());
      return 0;
    case WM_DPICHANGED:
      TakePlace(*reinterpret_cast<const RECT*>(lParam));
      return 0;
    case WM_GETMINMAXINFO:
      FillMinMaxInfo(*reinterpret_cast<MINMAXINFO*>(lParam));
      return 0;
    case WM_NCCALCSIZE:
    case WM_NCHITTEST:
    case WM_NCPAINT:
    case WM_NCACTIVATE:
    case kDrawThemedCaption:
    case kDrawThemedFrame:
      return HandleFrame(message, wParam, lParam);
    default:
      return HandleOther(message, wParam, lParam);
  }
}

/// Messages about the frame and the client area.
LRESULT NativeWindow::Impl::HandleFrame(UINT message, WPARAM wParam, LPARAM lParam) const {
  switch (message) {
    case WM_NCCALCSIZE:
      if (wParam != TRUE) return DefWindowProcW(window, message, wParam, lParam);
      CalculateClientArea(*reinterpret_cast<NCCALCSIZE_PARAMS*>(lParam));
      return 0;
    case WM_NCHITTEST:
      return static_cast<LRESULT>(HitTest(lParam));
    case WM_NCPAINT:
      PaintFrame();
      return 0;
    case WM_NCACTIVATE:
      // -1: the system does not draw its frame, active or not.
      return DefWindowProcW(window, message, wParam, -1);
    default:
      return 0;
  }
}

LRESULT NativeWindow::Impl::HandleOther(UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == TaskbarButton::CreatedMessage()) {
    taskbarButton.OnCreated(window);
    return 0;
  }
  if (message < WM_APP || message >= 0xC000) return DefWindowProcW(window, message, wParam, lParam);
  owner.WindowMessage({message, wParam, lParam});
  return 0;
}

void NativeWindow::Impl::OnSize(SizeKind kind) {
  const bool frameShows = kind == SizeKind::kMaximized || (kind == SizeKind::kMinimized && paintsFrame);
  if (std::exchange(paintsFrame, frameShows) != frameShows) {
    // PaintFrame draws the frame of a maximized window instead of the compositor.
    const DWMNCRENDERINGPOLICY policy = frameShows ? DWMNCRP_DISABLED : DWMNCRP_USEWINDOWSTYLE;
    DwmSetWindowAttribute(window, DWMWA_NCRENDERING_POLICY, &policy, sizeof policy);
    RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_FRAME);
  }
  owner.WindowResized(kind);
}

/// Task bars and task switchers ask the window for its icons.
void NativeWindow::Impl::ShowIcons() {
  largeIcon = LoadIconOfSize(GetSystemMetrics(SM_CXICON), GetSystemMetrics(SM_CYICON));
  smallIcon = LoadIconOfSize(GetSystemMetrics(SM_CXSMICON), GetSystemMetrics(SM_CYSMICON));
  SendMessageW(window, WM_SETICON, ICON_BIG, reinterpret_cast<LPARAM>(largeIcon.get()));
  SendMessageW(window, WM_SETICON, ICON_SMALL, reinterpret_cast<LPARAM>(smallIcon.get()));
}

/// Uses the background colour. Only a maximized window has a frame.
void NativeWindow::Impl::PaintFrame() const {
  const FrameDrawing drawing(window);
  // The system fills the context's region with the background of the window class.
  DefWindowProcW(window, WM_ERASEBKGND, reinterpret_cast<WPARAM>(drawing.Context()), 0);
}

void NativeWindow::Impl::TakePlace(const RECT& place) const {
  SetWindowPos(window, nullptr, place.left, place.top, place.right - place.left, place.bottom - place.top,
               SWP_NOZORDER | SWP_NOACTIVATE);
}

PointerState NativeWindow::Impl::PointerNow() {
  PointerState pointer;
  // Read the buttons first, so that the position is never older. A negative value means that the button is
  // down.
  pointer.leftDown = GetAsyncKeyState(VK_LBUTTON) < 0;
  pointer.rightDown = GetAsyncKeyState(VK_RBUTTON) < 0;
  pointer.swapped = GetSystemMetrics(SM_SWAPBUTTON) != 0;
  pointer.dragDistance = {GetSystemMetrics(SM_CXDRAG), GetSystemMetrics(SM_CYDRAG)};
  POINT position{};
  GetCursorPos(&position);
  pointer.position = {position.x, position.y};
  return pointer;
}

void NativeWindow::Impl::FillMinMaxInfo(MINMAXINFO& info) const {
  MONITORINFO monitor{};
  monitor.cbSize = sizeof monitor;
  const bool hasMonitor = GetMonitorInfoW(MonitorFromWindow(window, MONITOR_DEFAULTTONEAREST), &monitor) != 0;
  const Rect anySize{0, 0, INT_MAX, INT_MAX};
  const Size minimum = owner.MinimumWindowSize(hasMonitor ? Portable(monitor.rcWork) : anySize);
  info.ptMinTrackSize = {minimum.width, minimum.height};
  if (!hasMonitor) return;
  const MaximizedPlacement placement =
      owner.PlaceMaximized(Portable(monitor.rcMonitor), Portable(monitor.rcWork));
  info.ptMaxPosition = {placement.position.x, placement.position.y};
  info.ptMaxSize = {placement.size.width, placement.size.height};
}

void NativeWindow::Impl::CalculateClientArea(NCCALCSIZE_PARAMS& parameters) const {
  const int padding = GetSystemMetrics(SM_CXPADDEDBORDER);
  const Size frame{padding + GetSystemMetrics(SM_CXFRAME), padding + GetSystemMetrics(SM_CYFRAME)};
  RECT& proposed = parameters.rgrc[0];
  proposed = Native(owner.ClientArea(Portable(proposed), IsZoomed(window) != 0, frame));
}

WindowPart NativeWindow::Impl::HitTest(LPARAM point) const {
  RECT rect{};
  GetWindowRect(window, &rect);
  // Signed, because coordinates left of the primary monitor are negative.
  const Point place{static_cast<std::int16_t>(LOWORD(point)), static_cast<std::int16_t>(HIWORD(point))};
  return owner.HitTest(Portable(rect), place, IsZoomed(window) != 0);
}

namespace {

/// Windows 10 before 1703 does not have this function; there the program's manifest applies.
void UsePhysicalPixels() {
  const auto address = reinterpret_cast<void*>(
      GetProcAddress(GetModuleHandleW(L"user32.dll"), "SetProcessDpiAwarenessContext"));
  if (address == nullptr) return;
  reinterpret_cast<decltype(&SetProcessDpiAwarenessContext)>(address)(
      DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE_V2);
}

}  // namespace

bool PrepareWindowSystem(int, char**) {
  // Load libraries by name only from the system's directory, never from the game's.
  SetDefaultDllDirectories(LOAD_LIBRARY_SEARCH_SYSTEM32);
  UsePhysicalPixels();
  // Without COM the web view later fails without an error; the window still works.
  [[maybe_unused]] const HRESULT unread = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  return true;
}

void FinishWindowSystem() { CoUninitialize(); }

Rect WorkAreaUnderPointer() {
  POINT pointer{};
  GetCursorPos(&pointer);
  MONITORINFO monitor{};
  monitor.cbSize = sizeof monitor;
  GetMonitorInfoW(MonitorFromPoint(pointer, MONITOR_DEFAULTTOPRIMARY), &monitor);
  return Portable(monitor.rcWork);
}

NativeWindow::NativeWindow(WindowOwner& owner) : impl_(std::make_unique<Impl>(owner)) {
  Impl::main = impl_.get();
}

NativeWindow::~NativeWindow() = default;

bool NativeWindow::Create(const WindowLook& look, const Rect& placement) {
  WNDCLASSW windowClass{};
  windowClass.lpfnWndProc = &HostWindowProc;
  windowClass.hInstance = GetModuleHandleW(nullptr);
  windowClass.hCursor = LoadCursorW(nullptr, IDC_ARROW);
  windowClass.hbrBackground =
      CreateSolidBrush(RGB(look.background.red, look.background.green, look.background.blue));
  windowClass.lpszClassName = kWindowClass;
  RegisterClassW(&windowClass);
  const std::wstring title = ToNative(look.title);
  const HWND created = CreateWindowExW(WS_EX_APPWINDOW, kWindowClass, title.c_str(), kStyle, placement.left,
                                       placement.top, placement.Width(), placement.Height(), nullptr, nullptr,
                                       windowClass.hInstance, nullptr);
  if (created == nullptr) return false;
  impl_->ShowIcons();
  TaskbarButton::AllowMessage(created);
  // A new window has the system's frame. The system asks for the client area only after a change of the
  // frame.
  SetWindowPos(created, nullptr, 0, 0, 0, 0,
               SWP_FRAMECHANGED | SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
  return true;
}

void NativeWindow::Show() {
  ShowWindow(impl_->window, ShowCommand());
  UpdateWindow(impl_->window);
}

bool NativeWindow::Post(const QueueMessage& message) noexcept {
  return PostMessageW(impl_->window, message.number, message.wParam, message.lParam) != 0;
}

int NativeWindow::RunMessageLoop() {
  MSG message{};
  while (GetMessageW(&message, nullptr, 0, 0) > 0) {
    TranslateMessage(&message);
    DispatchMessageW(&message);
    impl_->owner.QueueAdvanced();
  }
  return static_cast<int>(message.wParam);
}

void NativeWindow::Quit(int code) { PostQuitMessage(code); }

bool NativeWindow::IsMaximized() const { return IsZoomed(impl_->window) != 0; }

Rect NativeWindow::ClientRect() const {
  RECT rect{};
  GetClientRect(impl_->window, &rect);
  return Portable(rect);
}

Rect NativeWindow::Place() const {
  RECT rect{};
  GetWindowRect(impl_->window, &rect);
  return Portable(rect);
}

Size NativeWindow::RestoredSize() const {
  WINDOWPLACEMENT placement{};
  placement.length = sizeof placement;
  GetWindowPlacement(impl_->window, &placement);
  const Rect normal = Portable(placement.rcNormalPosition);
  return {normal.Width(), normal.Height()};
}

PointerState NativeWindow::Pointer() const { return Impl::PointerNow(); }

void NativeWindow::WatchPointer(bool watch) {
  // A timer, because the web view receives the mouse messages, not the window.
  if (watch) {
    SetTimer(impl_->window, kPointerTimer, USER_TIMER_MINIMUM, nullptr);
  } else {
    KillTimer(impl_->window, kPointerTimer);
  }
}

void NativeWindow::StartMoving() {
  POINT pointer{};
  GetCursorPos(&pointer);
  // The web view captured the mouse when the button was pressed.
  ReleaseCapture();
  SendMessageW(impl_->window, WM_NCLBUTTONDOWN, HTCAPTION, MAKELPARAM(pointer.x, pointer.y));
}

void NativeWindow::Minimize() { ShowWindow(impl_->window, SW_MINIMIZE); }

void NativeWindow::Maximize() { ShowWindow(impl_->window, SW_MAXIMIZE); }

void NativeWindow::Restore() { ShowWindow(impl_->window, SW_RESTORE); }

void NativeWindow::RestoreTo(const Rect& place) {
  WINDOWPLACEMENT placement{};
  placement.length = sizeof placement;
  GetWindowPlacement(impl_->window, &placement);
  placement.showCmd = SW_SHOWNORMAL;
  placement.rcNormalPosition = Native(place);
  SetWindowPlacement(impl_->window, &placement);
  // Placement coordinates are relative to the work area. Correct the position if a task bar is at the left or
  // top.
  impl_->TakePlace(Native(place));
}

void NativeWindow::ShowProgress(const TaskProgress& progress) {
  impl_->taskbarButton.Show(impl_->window, progress);
}

void NativeWindow::AskToClose() { PostMessageW(impl_->window, WM_CLOSE, 0, 0); }

void* NativeWindow::Handle() const { return impl_->window; }

}  // namespace platform
