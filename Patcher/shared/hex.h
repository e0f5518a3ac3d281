#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "platform/hex_digits.h"

namespace patcher {

/// Two lower-case digits per byte.
inline std::string ToHex(std::span<const std::uint8_t> bytes) {
  std::string hex;
  hex.reserve(2 * bytes.size());
  for (const std::uint8_t byte : bytes) hex += platform::HexOf(byte);
  return hex;
}

/// Returns nothing unless the text is exactly the digits of this many bytes. The case of letters does not
/// count.
template <std::size_t Size>
constexpr std::optional<std::array<std::uint8_t, Size>> FromHex(std::string_view hex) {
  if (hex.size() != 2 * Size) return std::nullopt;
  std::array<std::uint8_t, Size> bytes{};
  for (std::size_t i = 0; i < hex.size(); ++i) {
    const char c = hex[i];
    if (!platform::IsHexDigit(c)) return std::nullopt;
    const int digit = c <= '9' ? c - '0' : (c | 32) - 'a' + 10;
    bytes[i / 2] = static_cast<std::uint8_t>(bytes[i / 2] << 4 | digit);
  }
  return bytes;
}

}  // namespace patcher
