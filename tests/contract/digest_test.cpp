#include "platform/digest.h"

#include <array>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "shared/hex.h"

namespace platform {
namespace {

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
      std::vector<std::uint8_t> memory(provider.ObjectLength());
      DigestHash hash(provider, memory);
      for (std::size_t at = 0; at < text.size(); at += piece) {
        hash.Update(text.data() + at, std::min(piece, text.size() - at));
      }
      std::array<std::uint8_t, 32> digest;
      hash.Finish(digest);
      EXPECT_EQ(patcher::ToHex(digest), expected) << piece;
    }
  }
}

}  // namespace
}  // namespace platform
