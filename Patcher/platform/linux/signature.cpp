#include "platform/signature.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <vector>

#include <openssl/bn.h>
#include <openssl/core_names.h>
#include <openssl/ec.h>
#include <openssl/ecdsa.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/param_build.h>

namespace platform {
namespace {

constexpr char kCurve[] = "P-256";
constexpr int kNumberSize = 32;
constexpr std::uint8_t kUncompressed = 4;  // first byte of a point with both coordinates (SEC 1, 2.3.3)

template <auto Free>
struct Freed {
  template <typename Object>
  void operator()(Object* object) const {
    Free(object);
  }
};
using Number = std::unique_ptr<BIGNUM, Freed<BN_clear_free>>;
using Key = std::unique_ptr<EVP_PKEY, Freed<EVP_PKEY_free>>;
using KeyContext = std::unique_ptr<EVP_PKEY_CTX, Freed<EVP_PKEY_CTX_free>>;
using Builder = std::unique_ptr<OSSL_PARAM_BLD, Freed<OSSL_PARAM_BLD_free>>;
using Parameters = std::unique_ptr<OSSL_PARAM, Freed<OSSL_PARAM_free>>;
using NumberPair = std::unique_ptr<ECDSA_SIG, Freed<ECDSA_SIG_free>>;

/// Without `secret` the key can only verify.
Key ImportKey(const PublicKey& publicKey, const BIGNUM* secret) {
  std::array<std::uint8_t, 1 + sizeof(PublicKey)> point{kUncompressed};
  std::copy(publicKey.begin(), publicKey.end(), point.begin() + 1);
  const Builder builder(OSSL_PARAM_BLD_new());
  const bool built =
      builder && OSSL_PARAM_BLD_push_utf8_string(builder.get(), OSSL_PKEY_PARAM_GROUP_NAME, kCurve, 0) &&
      OSSL_PARAM_BLD_push_octet_string(builder.get(), OSSL_PKEY_PARAM_PUB_KEY, point.data(), point.size()) &&
      (secret == nullptr || OSSL_PARAM_BLD_push_BN(builder.get(), OSSL_PKEY_PARAM_PRIV_KEY, secret));
  const Parameters parameters(built ? OSSL_PARAM_BLD_to_param(builder.get()) : nullptr);
  const KeyContext context(EVP_PKEY_CTX_new_from_name(nullptr, "EC", nullptr));
  EVP_PKEY* key = nullptr;
  if (parameters && context && EVP_PKEY_fromdata_init(context.get()) > 0) {
    EVP_PKEY_fromdata(context.get(), &key, secret != nullptr ? EVP_PKEY_KEYPAIR : EVP_PKEY_PUBLIC_KEY,
                      parameters.get());
  }
  return Key(key);
}

bool ExportNumber(const EVP_PKEY* key, const char* name, std::uint8_t* number) {
  BIGNUM* found = nullptr;
  EVP_PKEY_get_bn_param(key, name, &found);
  const Number owner(found);
  return found != nullptr && BN_bn2binpad(found, number, kNumberSize) == kNumberSize;
}

/// The signature in the library's format (RFC 3279, 2.2.3); empty if encoding fails.
std::vector<std::uint8_t> Encoded(const Signature& signature) {
  const NumberPair pair(ECDSA_SIG_new());
  Number r(BN_bin2bn(signature.data(), kNumberSize, nullptr));
  Number s(BN_bin2bn(signature.data() + kNumberSize, kNumberSize, nullptr));
  if (!pair || !r || !s || !ECDSA_SIG_set0(pair.get(), r.get(), s.get())) return {};
  static_cast<void>(r.release());
  static_cast<void>(s.release());
  std::uint8_t* bytes = nullptr;
  const int size = i2d_ECDSA_SIG(pair.get(), &bytes);
  if (size <= 0) return {};
  std::vector<std::uint8_t> encoded(bytes, bytes + size);
  OPENSSL_free(bytes);
  return encoded;
}

std::optional<Signature> Decoded(const std::vector<std::uint8_t>& encoded) {
  const std::uint8_t* at = encoded.data();
  const NumberPair pair(d2i_ECDSA_SIG(nullptr, &at, static_cast<long>(encoded.size())));
  Signature signature;
  if (!pair || BN_bn2binpad(ECDSA_SIG_get0_r(pair.get()), signature.data(), kNumberSize) != kNumberSize ||
      BN_bn2binpad(ECDSA_SIG_get0_s(pair.get()), signature.data() + kNumberSize, kNumberSize) !=
          kNumberSize) {
    return std::nullopt;
  }
  return signature;
}

}  // namespace

bool IsGoodSignature(const PublicKey& publicKey, SignedDigest digest, const Signature& signature) {
  // Discard the library's error entries about a bad signature: this thread's next connection would report
  // them.
  ERR_set_mark();
  const Key key = ImportKey(publicKey, nullptr);
  const KeyContext context(key ? EVP_PKEY_CTX_new_from_pkey(nullptr, key.get(), nullptr) : nullptr);
  const std::vector<std::uint8_t> encoded = Encoded(signature);
  const bool isGood =
      context && !encoded.empty() && EVP_PKEY_verify_init(context.get()) > 0 &&
      EVP_PKEY_verify(context.get(), encoded.data(), encoded.size(), digest.data(), digest.size()) == 1;
  ERR_pop_to_mark();
  return isGood;
}

std::optional<SigningKey> MakeSigningKey() {
  const Key key(EVP_PKEY_Q_keygen(nullptr, nullptr, "EC", kCurve));
  SigningKey made;
  if (!key || !ExportNumber(key.get(), OSSL_PKEY_PARAM_PRIV_KEY, made.secret.data()) ||
      !ExportNumber(key.get(), OSSL_PKEY_PARAM_EC_PUB_X, made.publicKey.data()) ||
      !ExportNumber(key.get(), OSSL_PKEY_PARAM_EC_PUB_Y, made.publicKey.data() + kNumberSize)) {
    return std::nullopt;
  }
  return made;
}

std::optional<Signature> SignDigest(const SigningKey& signingKey, SignedDigest digest) {
  const Number secret(BN_bin2bn(signingKey.secret.data(), kNumberSize, nullptr));
  const Key key = secret ? ImportKey(signingKey.publicKey, secret.get()) : nullptr;
  const KeyContext context(key ? EVP_PKEY_CTX_new_from_pkey(nullptr, key.get(), nullptr) : nullptr);
  std::size_t size = 0;
  if (!context || EVP_PKEY_sign_init(context.get()) <= 0 ||
      EVP_PKEY_sign(context.get(), nullptr, &size, digest.data(), digest.size()) <= 0) {
    return std::nullopt;
  }
  std::vector<std::uint8_t> encoded(size);
  if (EVP_PKEY_sign(context.get(), encoded.data(), &size, digest.data(), digest.size()) <= 0) {
    return std::nullopt;
  }
  encoded.resize(size);
  return Decoded(encoded);
}

}  // namespace platform
