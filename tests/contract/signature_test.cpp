#include "platform/signature.h"

#include <gtest/gtest.h>

#include "shared/hex.h"

namespace platform {
namespace {

using patcher::FromHex;
using Digest = std::array<std::uint8_t, 32>;

// SHA-256 of "sample", the key with which RFC 6979, A.2.5, signs it, and that signature.
constexpr char kDigest[] = "af2bdbe1aa9b6ec1e2ade1d694f41fc71a831d0268e9891562113d8a62add1bf";
constexpr char kSecret[] = "c9afa9d845ba75166b5c215767b1d6934e50c3db36e89b127b8a622b120f6721";
constexpr char kPublic[] =
    "60fed4ba255a9d31c961eb74c6356d68c049b8923b61fa6ce669622e60f29fb6"
    "7903fe1008b8bc99a41ae9e95628bc64f2f1b20c2d7e9f5177a3c294d4462299";
constexpr char kSignature[] =
    "efd48b2aacb6a8fd1140dd9cd45e81d69d2c877b56aaf991c34d0ea84eaf3716"
    "f7cb1c942d657c41d436c7a1b6e29f65f3e900dbb9aff4064dc4ab2f843acda8";

TEST(SignatureContract, AcceptsOnlyTheSignatureOfTheKeyAndTheDigest) {
  const PublicKey key = FromHex<64>(kPublic).value();
  const Digest digest = FromHex<32>(kDigest).value();
  const Signature signature = FromHex<64>(kSignature).value();
  EXPECT_TRUE(IsGoodSignature(key, digest, signature));
  for (const std::size_t at : {0U, 31U, 32U, 63U}) {
    Signature otherSignature = signature;
    PublicKey otherKey = key;
    Digest otherDigest = digest;
    otherSignature[at] ^= 1;
    otherKey[at] ^= 1;
    otherDigest[at / 2] ^= 1;
    EXPECT_FALSE(IsGoodSignature(key, digest, otherSignature)) << at;
    EXPECT_FALSE(IsGoodSignature(otherKey, digest, signature)) << at;
    EXPECT_FALSE(IsGoodSignature(key, otherDigest, signature)) << at;
  }
  EXPECT_FALSE(IsGoodSignature(key, digest, Signature{}));
  EXPECT_FALSE(IsGoodSignature(PublicKey{}, digest, signature));
}

TEST(SignatureContract, KeysSign) {
  const Digest digest = FromHex<32>(kDigest).value();
  const SigningKey known{FromHex<32>(kSecret).value(), FromHex<64>(kPublic).value()};
  const auto made = MakeSigningKey();
  const auto other = MakeSigningKey();
  ASSERT_TRUE(made && other);
  EXPECT_NE(made->secret, other->secret);
  for (const SigningKey& key : {known, *made}) {
    const auto signature = SignDigest(key, digest);
    ASSERT_TRUE(signature);
    EXPECT_TRUE(IsGoodSignature(key.publicKey, digest, *signature)) << patcher::ToHex(*signature);
    EXPECT_FALSE(IsGoodSignature(other->publicKey, digest, *signature));
  }
  EXPECT_FALSE(SignDigest({Digest{}, PublicKey{}}, digest));
}

}  // namespace
}  // namespace platform
