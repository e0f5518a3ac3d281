#include <windows.h>

#include "platform/message_queue.h"

namespace platform {
namespace {

constexpr wchar_t kWindowClass[] = L"TolmiraMMOPatcherQueue";

}  // namespace

struct MessageQueue::Impl {
  Handler handler;
  HWND window = nullptr;

  static LRESULT CALLBACK Procedure(HWND window, UINT number, WPARAM wParam, LPARAM lParam) {
    auto* self = reinterpret_cast<Impl*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (self == nullptr || number < WM_APP) return DefWindowProcW(window, number, wParam, lParam);
    self->handler({number, wParam, lParam});
    return 0;
  }
};

MessageQueue::MessageQueue(Handler handler) : impl_(std::make_unique<Impl>()) {
  impl_->handler = std::move(handler);
  WNDCLASSW windowClass{};
  windowClass.lpfnWndProc = &Impl::Procedure;
  windowClass.hInstance = GetModuleHandleW(nullptr);
  windowClass.lpszClassName = kWindowClass;
  RegisterClassW(&windowClass);
  impl_->window = CreateWindowExW(0, kWindowClass, L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                                  windowClass.hInstance, nullptr);
  SetWindowLongPtrW(impl_->window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(impl_.get()));
}

MessageQueue::~MessageQueue() { DestroyWindow(impl_->window); }

bool MessageQueue::Post(const QueueMessage& message) noexcept {
  return PostMessageW(impl_->window, message.number, message.wParam, message.lParam) != 0;
}

int MessageQueue::Run() {
  MSG message{};
  while (GetMessageW(&message, nullptr, 0, 0) > 0) DispatchMessageW(&message);
  return static_cast<int>(message.wParam);
}

void MessageQueue::Quit(int code) { PostQuitMessage(code); }

}  // namespace platform
