#include <windows.h>

#include "platform/error_box.h"

namespace platform {

void ShowErrorBox(const std::u16string& text, const std::u16string& title) {
  const auto native = [](const std::u16string& wide) { return std::wstring(wide.begin(), wide.end()); };
  MessageBoxW(nullptr, native(text).c_str(), native(title).c_str(), MB_ICONERROR | MB_OK);
}

}  // namespace platform
