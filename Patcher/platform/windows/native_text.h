#pragma once

#include <string>
#include <string_view>

namespace platform {

// Conversions between the launcher's UTF-16 type and that of the Windows functions.

inline std::wstring ToNative(std::u16string_view text) { return {text.begin(), text.end()}; }
inline std::u16string FromNative(std::wstring_view text) { return {text.begin(), text.end()}; }

}  // namespace platform
