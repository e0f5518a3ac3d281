#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

namespace patcher {

/// Defined by each target. Called once for each input. A fault ends the process.
void Fuzz(std::string_view input);

/// The bytes of an input as UTF-16.
inline std::u16string AsUtf16(std::string_view input) {
  std::u16string wide(input.size() / 2, u'\0');
  if (!wide.empty()) std::memcpy(wide.data(), input.data(), wide.size() * 2);
  return wide;
}

/// Ends the process with the sentence if an input has broken this condition.
inline void Require(bool condition, const char* sentence) {
  if (condition) return;
  std::fprintf(stderr, "broken: %s\n", sentence);
  std::abort();
}

}  // namespace patcher
