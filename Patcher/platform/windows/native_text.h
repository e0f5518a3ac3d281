#pragma once

#include <string>
#include <string_view>

namespace platform {

// UTF-16 as the launcher has it, and as the functions of Windows take and return it.

inline std::wstring ToNative(std::u16string_view text) { return {text.begin(), text.end()}; }
inline std::u16string FromNative(std::wstring_view text) { return {text.begin(), text.end()}; }

}  // namespace platform
