#include "platform/resources.h"

#include <span>
#include <string>

#include <gtest/gtest.h>

namespace platform {
namespace {

constexpr int kFirst = 7;
constexpr int kSecond = 65535;

std::string Text(std::span<const std::byte> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

TEST(ResourcesContract, EachNumberHasItsOwnBytes) {
  const std::string first = Text(EmbeddedResource(kFirst));
  EXPECT_EQ(first.size(), 256u * 2);
  for (std::size_t i = 0; i < first.size(); ++i)
    ASSERT_EQ(static_cast<unsigned char>(first[i]), i % 256) << i;
  EXPECT_EQ(Text(EmbeddedResource(kSecond)), "last, without a line end");
  EXPECT_EQ(EmbeddedResource(kFirst).data(), EmbeddedResource(kFirst).data()) << "no copy each time";
  for (const int missing : {1, 8, 300}) EXPECT_TRUE(EmbeddedResource(missing).empty()) << missing;
}

}  // namespace
}  // namespace platform
