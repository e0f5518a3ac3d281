#include "control/protocol/page_messages.h"

#include <gtest/gtest.h>

#include "platform/text.h"

namespace patcher {
namespace {

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

TEST(PageMessagesTest, CheckCarriesFortySamples) {
  CheckResult result{50, 9, 20, 21, 1, {"a\\b\"c"}};
  result.samples.resize(41, "x");
  const std::string text = BuildCheckMessage("repair", result);
  EXPECT_TRUE(
      text.starts_with(R"({"type":"check","mode":"repair","done":true,"total":50,"ok":9,"missing":20,)"
                       R"("corrupt":21,"bytes":1,"samples":["a\/b\"c","x",)"));
  EXPECT_EQ(std::count(text.begin(), text.end(), 'x'), 39);
  EXPECT_TRUE(BuildCheckMessage("verify", {}).ends_with("\"samples\":[]}"));
}

TEST(PageMessagesTest, NewsAndVersions) {
  EXPECT_EQ(BuildNewsMessage("{\"a\"}"), u"{\"type\":\"news\",\"ok\":true,\"body\":\"{\\\"a\\\"}\"}");
  EXPECT_EQ(BuildVersionsMessage(-1, 12), u"{\"type\":\"versions\",\"current\":-1,\"latest\":12}");
}

}  // namespace
}  // namespace patcher
