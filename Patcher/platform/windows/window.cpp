#include <windows.h>

#include "platform/window.h"

#include <objbase.h>

namespace platform {
namespace {

constexpr wchar_t kWindowClass[] = L"TolmiraMMOPatcherWnd";
constexpr DWORD kStyle =
    WS_POPUP | WS_CLIPCHILDREN | WS_SYSMENU | WS_THICKFRAME | WS_MINIMIZEBOX | WS_MAXIMIZEBOX;

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

/// The show command that whoever started the process asked for.
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

  /// The program's one window; its procedure finds it here.
  static inline Impl* main = nullptr;

  LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam);
  void FillMinMaxInfo(MINMAXINFO& info) const;
  void CalculateClientArea(NCCALCSIZE_PARAMS& parameters) const;
  WindowPart HitTest(LPARAM point) const;
};

namespace {

LRESULT CALLBACK HostWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  NativeWindow::Impl& self = *NativeWindow::Impl::main;
  // Once, before there are workers: they read it when they post.
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
      owner.WindowResized(KindOf(wParam));
      return 0;
    case WM_GETMINMAXINFO:
      FillMinMaxInfo(*reinterpret_cast<MINMAXINFO*>(lParam));
      return 0;
    case WM_NCCALCSIZE:
      if (wParam != TRUE) return DefWindowProcW(window, message, wParam, lParam);
      CalculateClientArea(*reinterpret_cast<NCCALCSIZE_PARAMS*>(lParam));
      return 0;
    case WM_NCHITTEST:
      return static_cast<LRESULT>(HitTest(lParam));
    default:
      if (message < WM_APP || message >= 0xC000) return DefWindowProcW(window, message, wParam, lParam);
      owner.WindowMessage({message, wParam, lParam});
      return 0;
  }
}

void NativeWindow::Impl::FillMinMaxInfo(MINMAXINFO& info) const {
  const Size minimum = owner.MinimumWindowSize();
  info.ptMinTrackSize = {minimum.width, minimum.height};
  MONITORINFO monitor{};
  monitor.cbSize = sizeof monitor;
  if (!GetMonitorInfoW(MonitorFromWindow(window, MONITOR_DEFAULTTONEAREST), &monitor)) return;
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
  // Signed: a monitor left of the primary one has negative coordinates.
  const Point place{static_cast<std::int16_t>(LOWORD(point)), static_cast<std::int16_t>(HIWORD(point))};
  return owner.HitTest(Portable(rect), place, IsZoomed(window) != 0);
}

bool PrepareWindowSystem(int, char**) {
  SetProcessDpiAwarenessContext(DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE_V2);
  // Without COM the web view fails later, silently; the window works all the same.
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
  windowClass.hbrBackground = CreateSolidBrush(RGB(look.red, look.green, look.blue));
  windowClass.lpszClassName = kWindowClass;
  RegisterClassW(&windowClass);
  const std::wstring title(look.title.begin(), look.title.end());
  const HWND created = CreateWindowExW(WS_EX_APPWINDOW, kWindowClass, title.c_str(), kStyle, placement.left,
                                       placement.top, placement.Width(), placement.Height(), nullptr, nullptr,
                                       windowClass.hInstance, nullptr);
  if (created == nullptr) return false;
  // The system lays a new window out with a frame and asks for the client area only when something changes.
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

void NativeWindow::StartDragging() {
  ReleaseCapture();
  SendMessageW(impl_->window, WM_NCLBUTTONDOWN, HTCAPTION, 0);
}

void NativeWindow::Minimize() { ShowWindow(impl_->window, SW_MINIMIZE); }

void NativeWindow::Maximize() { ShowWindow(impl_->window, SW_MAXIMIZE); }

void NativeWindow::Restore() { ShowWindow(impl_->window, SW_RESTORE); }

void NativeWindow::AskToClose() { PostMessageW(impl_->window, WM_CLOSE, 0, 0); }

void* NativeWindow::Handle() const { return impl_->window; }

}  // namespace platform
