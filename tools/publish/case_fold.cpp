#include "case_fold.h"

#include <algorithm>
#include <array>

#include "platform/text.h"

namespace patcher {
namespace {

/// Capitals from `first` to `last`, every `step`th character, whose small letters lie `distance` above.
struct CapitalRange {
  char16_t first;
  char16_t last;
  char16_t step;
  int distance;
};

// In ascending order. All of them lie in the basic plane, so that UTF-16 units are enough.
constexpr std::array kCapitals{
    CapitalRange{0x0041, 0x005A, 1, 32}, CapitalRange{0x00C0, 0x00D6, 1, 32},
    CapitalRange{0x00D8, 0x00DE, 1, 32}, CapitalRange{0x0100, 0x012E, 2, 1},
    CapitalRange{0x0132, 0x0136, 2, 1},  CapitalRange{0x0139, 0x0147, 2, 1},
    CapitalRange{0x014A, 0x0176, 2, 1},  CapitalRange{0x0178, 0x0178, 1, -121},
    CapitalRange{0x0179, 0x017D, 2, 1},  CapitalRange{0x01CD, 0x01DB, 2, 1},
    CapitalRange{0x01DE, 0x01EE, 2, 1},  CapitalRange{0x01F8, 0x021E, 2, 1},
    CapitalRange{0x0222, 0x0232, 2, 1},  CapitalRange{0x0386, 0x0386, 1, 38},
    CapitalRange{0x0388, 0x038A, 1, 37}, CapitalRange{0x038C, 0x038C, 1, 64},
    CapitalRange{0x038E, 0x038F, 1, 63}, CapitalRange{0x0391, 0x03A1, 1, 32},
    CapitalRange{0x03A3, 0x03AB, 1, 32}, CapitalRange{0x0400, 0x040F, 1, 80},
    CapitalRange{0x0410, 0x042F, 1, 32}, CapitalRange{0x0460, 0x0480, 2, 1},
    CapitalRange{0x048A, 0x04BE, 2, 1},  CapitalRange{0x04C0, 0x04C0, 1, 15},
    CapitalRange{0x04C1, 0x04CD, 2, 1},  CapitalRange{0x04D0, 0x052E, 2, 1},
    CapitalRange{0x0531, 0x0556, 1, 48}, CapitalRange{0x1E00, 0x1E94, 2, 1},
    CapitalRange{0x1EA0, 0x1EFE, 2, 1},  CapitalRange{0x2160, 0x216F, 1, 16},
    CapitalRange{0x24B6, 0x24CF, 1, 26}, CapitalRange{0xFF21, 0xFF3A, 1, 32},
};

char16_t Fold(char16_t unit) {
  const auto range = std::lower_bound(kCapitals.begin(), kCapitals.end(), unit,
                                      [](const CapitalRange& r, char16_t u) { return r.last < u; });
  if (range == kCapitals.end() || unit < range->first || (unit - range->first) % range->step != 0) {
    return unit;
  }
  return static_cast<char16_t>(unit + range->distance);
}

}  // namespace

bool IsUtf8(std::string_view text) {
  // What is broken comes back as a replacement character, which is another text.
  return platform::WideToUtf8(platform::Utf8ToWide(text)) == text;
}

std::string FoldCase(std::string_view text) {
  std::u16string wide = platform::Utf8ToWide(text);
  std::transform(wide.begin(), wide.end(), wide.begin(), Fold);
  return platform::WideToUtf8(wide);
}

}  // namespace patcher
