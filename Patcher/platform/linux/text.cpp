#include "platform/text.h"

#include <cstdint>

namespace platform {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

/// Decodes the character at `at` and moves past it. A broken sequence gives one U+FFFD for its longest valid
/// prefix.
char32_t NextCharacter(std::string_view text, std::size_t& at) {
  const auto lead = static_cast<std::uint8_t>(text[at++]);
  if (lead < 0x80) return lead;
  int following = 0;
  std::uint8_t lowest = 0x80;
  std::uint8_t highest = 0xBF;
  if (lead >= 0xC2 && lead <= 0xDF) {
    following = 1;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    following = 2;
    if (lead == 0xE0) lowest = 0xA0;
    if (lead == 0xED) highest = 0x9F;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    following = 3;
    if (lead == 0xF0) lowest = 0x90;
    if (lead == 0xF4) highest = 0x8F;
  } else {
    return kReplacement;
  }
  char32_t character = lead & (0x3Fu >> following);
  for (; following > 0; --following) {
    if (at >= text.size()) return kReplacement;
    const auto byte = static_cast<std::uint8_t>(text[at]);
    if (byte < lowest || byte > highest) return kReplacement;
    lowest = 0x80;
    highest = 0xBF;
    character = character << 6 | (byte & 0x3Fu);
    ++at;
  }
  return character;
}

void AppendUtf8(std::string& out, char32_t character) {
  const auto byte = [&out](char32_t value) { out += static_cast<char>(static_cast<std::uint8_t>(value)); };
  if (character < 0x80) {
    byte(character);
  } else if (character < 0x800) {
    byte(0xC0 | character >> 6);
    byte(0x80 | (character & 0x3F));
  } else if (character < 0x10000) {
    byte(0xE0 | character >> 12);
    byte(0x80 | (character >> 6 & 0x3F));
    byte(0x80 | (character & 0x3F));
  } else {
    byte(0xF0 | character >> 18);
    byte(0x80 | (character >> 12 & 0x3F));
    byte(0x80 | (character >> 6 & 0x3F));
    byte(0x80 | (character & 0x3F));
  }
}

bool IsHighSurrogate(char16_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool IsLowSurrogate(char16_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

}  // namespace

std::u16string Utf8ToWide(std::string_view text) {
  std::u16string wide;
  wide.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    const char32_t character = NextCharacter(text, at);
    if (character < 0x10000) {
      wide += static_cast<char16_t>(character);
    } else {
      wide += static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10));
      wide += static_cast<char16_t>(0xDC00 + ((character - 0x10000) & 0x3FF));
    }
  }
  return wide;
}

std::string WideToUtf8(std::u16string_view text) {
  std::string narrow;
  narrow.reserve(text.size());
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char16_t unit = text[at];
    if (IsHighSurrogate(unit) && at + 1 < text.size() && IsLowSurrogate(text[at + 1])) {
      AppendUtf8(narrow, 0x10000 + ((unit - 0xD800u) << 10) + (text[at + 1] - 0xDC00u));
      ++at;
    } else {
      AppendUtf8(narrow, IsHighSurrogate(unit) || IsLowSurrogate(unit) ? kReplacement : char32_t{unit});
    }
  }
  return narrow;
}

std::filesystem::path PathFromBytes(std::string_view bytes) { return bytes; }

std::string BytesFromPath(const std::filesystem::path& path) { return path.native(); }

std::filesystem::path PathFromUtf8(std::string_view text) { return text; }

std::string Utf8FromPath(const std::filesystem::path& path) { return path.native(); }

std::u16string WideFromPath(const std::filesystem::path& path) { return Utf8ToWide(path.native()); }

}  // namespace platform
