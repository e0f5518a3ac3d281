#include "options/render_tuning.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace patcher {

float TuneClamp(const TuneDef& row, float value) {
  return row.min > value ? row.min : std::min(row.max, value);
}

float TuneRead(const SettingsFile& file, const TuneDef& row) {
  return TuneClamp(row, file.GetFloat(row.key, row.def));
}

std::string TuneFormat(float value) {
  constexpr int kDigits = 6;
  std::array<char, 64> text;
  const std::to_chars_result end =
      std::to_chars(text.data(), text.data() + text.size(), static_cast<double>(value),
                    std::chars_format::general, kDigits);
  return {text.data(), end.ptr};
}

}  // namespace patcher
