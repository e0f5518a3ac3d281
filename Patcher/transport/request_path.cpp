#include "transport/request_path.h"

#include <cstdint>

#include "platform/hex_digits.h"

namespace patcher {
namespace {

bool IsUnreserved(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '_' ||
         c == '.' || c == '~' || c == '/';
}

}  // namespace

std::string PercentEncodePath(std::string_view path) {
  std::string encoded;
  encoded.reserve(path.size());
  for (char c : path) {
    if (IsUnreserved(c)) {
      encoded += c;
      continue;
    }
    encoded += '%' + platform::HexOf(static_cast<std::uint8_t>(c), platform::kUpperHexDigits);
  }
  return encoded;
}

}  // namespace patcher
