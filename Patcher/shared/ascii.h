#pragma once

namespace patcher {

/// Converts ASCII letters to lower case in every locale; other characters do not change.
template <typename Char>
constexpr Char AsciiLower(Char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<Char>(c - 'A' + 'a') : c;
}

}  // namespace patcher
