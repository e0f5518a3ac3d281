#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace platform {

inline constexpr std::string_view kLowerHexDigits = "0123456789abcdef";
inline constexpr std::string_view kUpperHexDigits = "0123456789ABCDEF";

/// The two hexadecimal digits of a byte.
inline std::string HexOf(std::uint8_t byte, std::string_view digits = kLowerHexDigits) {
  return {digits[byte >> 4], digits[byte & 15]};
}

constexpr bool IsHexDigit(char c) {
  return kLowerHexDigits.find(c) != std::string_view::npos ||
         kUpperHexDigits.find(c) != std::string_view::npos;
}

}  // namespace platform
