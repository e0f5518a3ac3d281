#include "platform/text.h"

#include <string>

#include <gtest/gtest.h>

namespace platform {
namespace {

TEST(TextContract, KnownTexts) {
  const std::pair<std::string, std::u16string> cases[] = {
      {"", u""},
      {"plain \x7F", u"plain \x7F"},
      {std::string("a\0b", 3), std::u16string(u"a\0b", 3)},
      {"\xC2\x80\xDF\xBF", u"\u0080\u07FF"},
      {"\xE0\xA0\x80\xEF\xBF\xBF", u"\u0800\uFFFF"},
      {"\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", u"\U00010000\U0010FFFF"},
  };
  for (const auto& [narrow, wide] : cases) {
    EXPECT_EQ(Utf8ToWide(narrow), wide) << narrow;
    EXPECT_EQ(WideToUtf8(wide), narrow) << narrow;
  }
}

TEST(TextContract, BrokenBytesAreReplacedAndTheirNeighboursKept) {
  const std::string broken[] = {
      "\x80",         "\xBF\xBF",         "\xC0\x80",         "\xC1\xBF",         "\xC3", "\xE0\x80\x80",
      "\xE2\x82",     "\xED\xA0\x80",     "\xED\xBF\xBF",     "\xF0\x80\x80\x80", "\xFF", "\xF0\x9F\x98",
      "\xF8\x88\x80", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xE2\x82\xE2\x82", "\xFE"};
  for (const std::string& bytes : broken) {
    const std::u16string wide = Utf8ToWide("a" + bytes + "b");
    EXPECT_EQ(wide, u"a" + std::u16string(wide.size() - 2, u'\uFFFD') + u"b") << WideToUtf8(wide);
    EXPECT_GE(wide.size(), 3u);
    EXPECT_EQ(Utf8ToWide(bytes).find_first_not_of(u'\uFFFD'), std::u16string::npos);
  }
  for (const char16_t lone : {u'\xD800', u'\xDBFF', u'\xDC00', u'\xDFFF'}) {
    EXPECT_EQ(WideToUtf8(std::u16string(u"x") + lone + u"y"), "x\xEF\xBF\xBDy");
    EXPECT_EQ(WideToUtf8(std::u16string(1, lone)), "\xEF\xBF\xBD");
  }
}

TEST(TextContract, PathsKeepTheirNames) {
  const std::string name = "d\xC3\xA9j\xC3\xA0 \xE6\x97\xA5\xE6\x9C\xAC";
  EXPECT_EQ(Utf8FromPath(PathFromUtf8(name)), name);
  EXPECT_EQ(WideFromPath(PathFromUtf8(name)), Utf8ToWide(name));
  EXPECT_EQ(BytesFromPath(PathFromBytes("plain name.txt")), "plain name.txt");
}

}  // namespace
}  // namespace platform
