// The page's resources and the messages that it receives.
#include <gtest/gtest.h>

#include "control/page_content.h"
#include "control/protocol/page_messages.h"
#include "platform/text.h"

namespace patcher {
namespace {

TEST(PageContent, TheLastComponentOfAnAddressNamesTheImage) {
  const struct {
    const char* address;
    int resource;  // 0: none
  } kCases[] = {
      {"https://assets.tolmira.example/logo.png?x=/panel.png#led-red.png", 201},
      {"https://assets.tolmira.example/no/such/folder/panel.png", 202},
      {"https://assets.tolmira.example/background.jpg#", 200},
      {"led-amber.png", 208},
      {"https://assets.tolmira.example/LOGO.PNG", 0},
      {"https://assets.tolmira.example/logo.png/", 0},
      {"https://assets.tolmira.example/?logo.png", 0},
  };
  for (const auto& [address, resource] : kCases) {
    const Asset* asset = FindAsset(address);
    EXPECT_EQ(asset != nullptr ? asset->resource : 0, resource) << address;
  }
  EXPECT_FALSE(ServeAsset("led-amber.png")) << "the tests carry no images";
}

TEST(PageContent, RecognizesTheAddressesOfItsOwnDocument) {
  for (const char* own : {"about:blank", "data:text/html;charset=utf-8;base64,PGh0bWw+"}) {
    EXPECT_TRUE(IsOwnAddress(own)) << own;
  }
  for (const char* foreign : {"https://tolmira.example/", "http://about:blank/", "file:///C:/x.html",
                              "javascript:0", "blob:null/1", "ABOUT:blank", ""}) {
    EXPECT_FALSE(IsOwnAddress(foreign)) << foreign;
  }
}

TEST(PageMessagesTest, Escapes) {
  EXPECT_EQ(EscapeLight("a\"b\\c\nd\te/\x01\xC3\xA9"), u"a\\\"b\\\\c\\nd\te/\x01\u00e9");
  EXPECT_EQ(EscapeFull("\t\f\b\r\n\x01\x1f\x7f\"\\\xC3\xA9\xF0\x9F\x8E\xAE"),
            u"\\t\\f\\b\\r\\n\\u0001\\u001f\x7f\\\"\\\\\u00e9\U0001F3AE");
}

TEST(PageMessagesTest, ProgressKeepsOrderAndTurnsSlashes) {
  const ProgressReport report{42, 5'000'000'000, 12'000'000'000, 7, "data\\a \"b\"", 3, 9};
  EXPECT_EQ(
      platform::WideToUtf8(BuildProgressMessage(report)),
      R"({"type":"progress","percent":42,"downloadedBytes":5000000000,"totalBytes":12000000000,"speedBps":7,)"
      R"("currentFile":"data/a \"b\"","fileIndex":3,"fileCount":9})");
}

TEST(PageMessagesTest, CheckKeepsOrderAndTurnsSlashes) {
  EXPECT_EQ(BuildCheckMessage("repair", {50, 9, 20, 21, 1, {"a\\b\"c", "x"}}),
            R"({"type":"check","mode":"repair","done":true,"total":50,"ok":9,"missing":20,)"
            R"("corrupt":21,"bytes":1,"samples":["a\/b\"c","x"]})");
}

}  // namespace
}  // namespace patcher
