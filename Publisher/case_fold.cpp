#include "case_fold.h"

#include <algorithm>

#include "case_folding_table.h"
#include "platform/text.h"

namespace patcher::publisher {
namespace {

char32_t Fold(char32_t character) {
  const auto range = std::lower_bound(kFoldRanges.begin(), kFoldRanges.end(), character,
                                      [](const FoldRange& r, char32_t c) { return r.last < c; });
  if (range == kFoldRanges.end() || character < range->first ||
      (character - range->first) % range->step != 0) {
    return character;
  }
  return character + static_cast<char32_t>(range->distance);
}

bool IsAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 128; });
}

bool IsHighSurrogate(char16_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }

/// A folded character has the same number of UTF-16 units.
void FoldUnits(std::u16string& text) {
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (!IsHighSurrogate(text[at]) || at + 1 == text.size()) {
      text[at] = static_cast<char16_t>(Fold(text[at]));
      continue;
    }
    const char32_t above = Fold(0x10000 + ((text[at] - 0xD800u) << 10) + (text[at + 1] - 0xDC00u)) - 0x10000;
    text[at] = static_cast<char16_t>(0xD800 + (above >> 10));
    text[++at] = static_cast<char16_t>(0xDC00 + (above & 0x3FF));
  }
}

}  // namespace

bool IsUtf8(std::string_view text) {
  // Invalid bytes become replacement characters, so the text changes.
  return IsAscii(text) || platform::WideToUtf8(platform::Utf8ToWide(text)) == text;
}

std::string FoldCase(std::string_view text) {
  if (IsAscii(text)) {
    std::string folded(text);
    for (char& c : folded) {
      if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return folded;
  }
  std::u16string wide = platform::Utf8ToWide(text);
  FoldUnits(wide);
  return platform::WideToUtf8(wide);
}

}  // namespace patcher::publisher
