#pragma once

#include <string>

namespace patcher {

/// A path as the cleanup compares it: backslashes are slashes, ASCII letters are lower case whatever the
/// system's locale is, all other bytes stay.
inline std::string NormalForm(std::string path) {
  for (char& c : path) {
    if (c == '\\') {
      c = '/';
    } else if (c >= 'A' && c <= 'Z') {
      c = static_cast<char>(c - 'A' + 'a');
    }
  }
  return path;
}

}  // namespace patcher
