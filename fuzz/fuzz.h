#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

/// The entry of a target: called with one input after the other, and returns 0. A fault ends the process.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace patcher {

inline std::string_view AsText(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

/// A claim of a target that an input has broken.
inline void Require(bool claim, const char* sentence) {
  if (claim) return;
  std::fprintf(stderr, "broken: %s\n", sentence);
  std::abort();
}

}  // namespace patcher
