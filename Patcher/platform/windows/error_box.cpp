#include <windows.h>

#include "platform/error_box.h"

#include "platform/windows/native_text.h"

namespace platform {

void ShowErrorBox(const std::u16string& text, const std::u16string& title) {
  MessageBoxW(nullptr, ToNative(text).c_str(), ToNative(title).c_str(), MB_ICONERROR | MB_OK);
}

}  // namespace platform
