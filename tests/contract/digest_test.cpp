#include "platform/digest.h"

#include <array>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "shared/hex.h"

namespace platform {
namespace {

/// A running hash with the working memory it needs.
struct Running {
  const DigestProvider& provider;
  std::vector<std::uint8_t> memory = std::vector<std::uint8_t>(provider.ObjectLength());
  DigestHash hash = DigestHash(provider, memory);
};

std::string Finish(DigestHash& hash) {
  std::array<std::uint8_t, 32> digest;
  hash.Finish(digest);
  return patcher::ToHex(digest);
}

TEST(DigestContract, PublishedVectorsInPiecesOfEverySize) {
  const std::pair<std::string, const char*> vectors[] = {
      {"", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
      {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
      {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
       "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
      {std::string(1000000, 'a'), "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
  };
  const DigestProvider provider;
  ASSERT_EQ(provider.DigestLength(), 32u);
  for (const auto& [text, expected] : vectors) {
    for (const std::size_t piece : {std::size_t{55}, std::size_t{64}, std::size_t{4097}, text.size() + 1}) {
      Running running{provider};
      for (std::size_t at = 0; at < text.size(); at += piece) {
        running.hash.Update(text.data() + at, std::min(piece, text.size() - at));
      }
      EXPECT_EQ(Finish(running.hash), expected) << piece;
    }
  }
}

TEST(DigestContract, HashesOfOneProviderDoNotMix) {
  const DigestProvider provider;
  Running first{provider};
  Running second{provider};
  {
    Running abandoned{provider};
    abandoned.hash.Update("zzz", 3);
  }
  first.hash.Update("a", 1);
  second.hash.Update("ab", 2);
  DigestHash moved(std::move(first.hash));
  moved.Update("bc", 2);
  second.hash.Update("c", 1);
  EXPECT_EQ(Finish(moved), Finish(second.hash));
}

}  // namespace
}  // namespace platform
