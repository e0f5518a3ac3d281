#include "minijson/minijson.h"

#include <sstream>
#include <vector>

#include <gtest/gtest.h>

namespace MiniJson {
namespace {

Value Read(std::string_view text) {
  std::size_t position = 0;
  return Parse(text, position);
}

std::string Written(const Value& value) {
  std::ostringstream out;
  value.Write(out, 0);
  return out.str();
}

std::string Failure(std::string_view text) {
  try {
    Read(text);
  } catch (const std::exception& failure) {
    return failure.what();
  }
  return "";
}

TEST(MiniJsonTest, FailuresHaveFixedTexts) {
  const std::pair<const char*, std::vector<const char*>> cases[] = {
      {"unexpected end of input", {"", " \t\r\n", "["}},
      {"expected string", {"{", "{\"a\":1,}"}},
      {"expected ':'", {"{\"a\""}},
      {"expected ',' or '}'", {"{\"a\":1", "{\"a\":1]"}},
      {"expected ',' or ']'", {"[1"}},
      {"unterminated string", {"\"ab", "\"ab\\", "\"\\u12\""}},
      {"unexpected character", {"nul", "[1,]", "\xEF\xBB\xBF{}"}},
      {"invalid stod argument", {"-", ".", "e5", "+-5"}},
      {"stod argument out of range", {"1e999", "1e-999"}}};
  for (const auto& [words, texts] : cases) {
    for (const char* text : texts) EXPECT_EQ(Failure(text), words) << text;
  }
  EXPECT_THROW(Read("-"), std::invalid_argument);
  EXPECT_THROW(Read("1e999"), std::out_of_range);
}

TEST(MiniJsonTest, NumbersUseTheLongestPrefix) {
  const std::pair<const char*, double> cases[] = {{"+5", 5},
                                                  {"1-2", 1},
                                                  {"1.2.3", 1.2},
                                                  {"1e", 1},
                                                  {"-0.5e1", -5},
                                                  {"9007199254740993", 9007199254740992.0},
                                                  // Rounded twice if it is read digit by digit.
                                                  {"6249979066121302517", 6249979066121302517.0}};
  for (const auto& [text, number] : cases) EXPECT_EQ(Read(text).numberValue, number) << text;
}

TEST(MiniJsonTest, StringsAreLenient) {
  EXPECT_EQ(Read("\"\\u00e9\\ud83c\\udfae\\b\\f\\q\\n\\/\\\\\\\"\n\xC3\xA9\"").stringValue,
            "???bfq\n/\\\"\n\xC3\xA9");
  EXPECT_EQ(Read("true false").kind, Kind::Bool);
}

TEST(MiniJsonTest, KeepsDuplicatesAndThePlaceOfAChangedMember) {
  Value value = Read("{\"a\":1,\"b\":2,\"a\":3}");
  EXPECT_EQ(value.Find("a")->numberValue, 1);
  value.Set("a", Value::MakeNumber(9));
  value.Set("c", Value::MakeBool(true));
  EXPECT_EQ(Written(value), "{\n  \"a\": 9,\n  \"b\": 2,\n  \"a\": 3,\n  \"c\": true\n}");
  EXPECT_EQ(Read("7").Find("a"), nullptr);
}

TEST(MiniJsonTest, NestingIsLimited) {
  EXPECT_EQ(Failure(std::string(kMaxDepth, '[') + "1"), "expected ',' or ']'");
  for (const std::size_t depth : {kMaxDepth + std::size_t{1}, std::size_t{1'000'000}}) {
    EXPECT_EQ(Failure(std::string(depth, '[') + "1"), "nesting too deep") << depth;
  }
}

TEST(MiniJsonTest, Writes) {
  EXPECT_EQ(
      Written(Read("[5.0,-0.0,0.1,3000000000,1234567.5,null,[],{},[1]]")),
      "[\n  5,\n  0,\n  0.1,\n  3000000000,\n  1.23457e+06,\n  null,\n  [],\n  {},\n  [\n    1\n  ]\n]");
  std::ostringstream out;
  WriteString(out, std::string_view("\x01\x08\t\n\r\"\\/\x7f\xC3\xA9\0", 12));
  EXPECT_EQ(out.str(), "\"\\u0001\\u0008\\t\\n\\r\\\"\\\\/\x7f\xC3\xA9\\u0000\"");
}

}  // namespace
}  // namespace MiniJson
