#include <cstddef>
#include <iostream>
#include <string>

#include "platform/standard_streams.h"

namespace platform {

bool ReadLine(std::string& line) {
  constexpr std::size_t kMaxLine = 1 << 20;
  constexpr int kEnd = std::char_traits<char>::eof();
  line.clear();
  std::streambuf& input = *std::cin.rdbuf();
  int next = input.sbumpc();
  if (next == kEnd) return false;
  for (; next != kEnd && next != '\n'; next = input.sbumpc()) {
    if (line.size() < kMaxLine) line += static_cast<char>(next);
  }
  if (!line.empty() && line.back() == '\r') line.pop_back();
  return true;
}

}  // namespace platform
