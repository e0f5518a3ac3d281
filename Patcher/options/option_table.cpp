#include "options/option_table.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace patcher {
namespace {

std::int32_t Inverted(std::int32_t value) { return value == 0 ? 1 : 0; }

}  // namespace

std::int32_t TruncateToInt(double number) {
  using Limits = std::numeric_limits<std::int32_t>;
  const double integer = std::trunc(number);
  return integer >= Limits::min() && integer <= Limits::max() ? static_cast<std::int32_t>(integer)
                                                              : Limits::min();
}

std::int32_t OptionToPage(const OptionDef& option, std::int32_t fileValue) {
  const std::int32_t value = std::clamp(fileValue, option.min, option.max);
  return option.inverted ? Inverted(value) : value;
}

std::int32_t OptionFromPage(const OptionDef& option, double pageValue) {
  const std::int32_t value = TruncateToInt(pageValue);
  return std::clamp(option.inverted ? Inverted(value) : value, option.min, option.max);
}

}  // namespace patcher
