#pragma once

#include <cstdint>

namespace platform {

struct Colour {
  std::uint8_t red = 0;
  std::uint8_t green = 0;
  std::uint8_t blue = 0;
};

}  // namespace platform
