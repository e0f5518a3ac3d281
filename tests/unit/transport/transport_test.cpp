#include <gtest/gtest.h>

#include "support/scratch_directory.h"
#include "transport/config.h"
#include "transport/http_session.h"
#include "transport/request_path.h"
#include "transport/transfer_pace.h"

namespace patcher {
namespace {

TEST(TransferPaceTest, EndsATransferOfTooFewBytesInAMinute) {
  using Wait = std::pair<int, std::uint64_t>;  // seconds and bytes
  const std::pair<std::vector<Wait>, std::size_t> cases[] = {
      // The number of waits after which it is silent; 0: never.
      {{{20, 1}, {20, 1}, {19, 1}, {1, 1}}, 4},
      {{{59, 4095}, {0, 0}, {1, 0}}, 3},
      {{{60, 4096}, {59, 0}}, 0},
      {{{600, 65536}}, 0},
      {{{30, 2048}, {29, 2048}, {59, 1}, {2, 4095}, {59, 4000}}, 0},
      {{{30, 4096}, {30, 100}, {30, 100}}, 3},
      {std::vector<Wait>(100000, Wait{0, 0}), 0},
  };
  for (const auto& [waits, silentAfter] : cases) {
    TransferPace pace;
    std::size_t silent = 0;
    for (std::size_t i = 0; i < waits.size() && silent == 0; ++i) {
      if (!pace.Count(std::chrono::seconds(waits[i].first), waits[i].second)) silent = i + 1;
    }
    EXPECT_EQ(silent, silentAfter) << waits.size() << " waits from " << waits[0].first;
  }
}

TEST(ConfigTest, LastAcceptedValueCounts) {
  const std::pair<const char*, std::pair<const char*, int>> cases[] = {
      {"", {kDefaultBaseUrl, 4}},
      {"BaseUrl=http://x   \r\nConnections=8\r\n", {"http://x", 8}},
      {"# c\n\nConnections=6x", {kDefaultBaseUrl, 6}},
      {"Connections=2\nConnections=9\nConnections=0\nConnections=-1\nConnections=abc\n",
       {kDefaultBaseUrl, 2}},
      {"baseurl=x\nBaseUrl =x\nBaseUrl=\nBaseUrl", {kDefaultBaseUrl, 4}},
      {"\xEF\xBB\xBF"
       "BaseUrl=x\nConnections= +3",
       {kDefaultBaseUrl, 3}},
      {"Connections=99999999999999999999", {kDefaultBaseUrl, 4}},
      {"BaseUrl= \tx=y\t", {" \tx=y\t", 4}},
  };
  for (const auto& [text, expected] : cases) {
    PatchConfig config;
    config.Apply(text);
    EXPECT_EQ(config.baseUrl, expected.first) << text;
    EXPECT_EQ(config.connections, expected.second) << text;
  }
}

TEST(ConfigTest, ExistingFileIsLeftAlone) {
  ScratchDirectory directory;
  PatchConfig::Load();
  EXPECT_EQ(ReadWhole(directory / "patcher.ini"),
            std::string("BaseUrl=") + kDefaultBaseUrl + "\r\nConnections=4\r\n");
  const std::string foreign = "; mine\nConnections=99\n\nX=1";
  WriteWhole(directory / "patcher.ini", foreign);
  PatchConfig::Load();
  EXPECT_EQ(ReadWhole(directory / "patcher.ini"), foreign);
  EXPECT_EQ(PatchConfig::Current().connections, 4);
}

TEST(PercentEncodeTest, KeepsOnlyUnreservedBytesAndSlashes) {
  EXPECT_EQ(PercentEncodePath("/a-b_c.d~e/A Z?%\xC3\xA9\\"), "/a-b_c.d~e/A%20Z%3F%25%C3%A9%5C");
}

}  // namespace
}  // namespace patcher
