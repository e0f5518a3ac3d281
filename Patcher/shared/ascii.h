#pragma once

namespace patcher {

/// Lower case for ASCII letters, whatever the system's locale is; every other character stays.
template <typename Char>
constexpr Char AsciiLower(Char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<Char>(c - 'A' + 'a') : c;
}

}  // namespace patcher
