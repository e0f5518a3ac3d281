#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

namespace patcher {

/// What a target defines: called with one input after the other. A fault ends the process.
void Fuzz(std::string_view input);

/// The bytes of an input as UTF-16.
inline std::u16string AsUtf16(std::string_view input) {
  std::u16string wide(input.size() / 2, u'\0');
  if (!wide.empty()) std::memcpy(wide.data(), input.data(), wide.size() * 2);
  return wide;
}

/// A claim of a target that an input has broken.
inline void Require(bool claim, const char* sentence) {
  if (claim) return;
  std::fprintf(stderr, "broken: %s\n", sentence);
  std::abort();
}

}  // namespace patcher
