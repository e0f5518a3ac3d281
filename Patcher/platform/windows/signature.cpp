#include <windows.h>

#include "platform/signature.h"

#include <algorithm>
#include <cstring>

#include <bcrypt.h>

namespace platform {
namespace {

constexpr ULONG kNumberSize = 32;

/// Import and export format of a key; a public key ends before the secret.
struct KeyBlob {
  BCRYPT_ECCKEY_BLOB head{};
  PublicKey publicKey{};
  std::array<std::uint8_t, kNumberSize> secret{};
};
constexpr ULONG kPublicSize = sizeof(KeyBlob) - kNumberSize;
static_assert(sizeof(KeyBlob) == sizeof(BCRYPT_ECCKEY_BLOB) + 3 * kNumberSize);

/// The system's ECDSA provider and one key. There is no key after a failed step.
class Key {
 public:
  Key() {
    if (BCryptOpenAlgorithmProvider(&algorithm_, BCRYPT_ECDSA_P256_ALGORITHM, nullptr, 0) != 0) {
      algorithm_ = nullptr;
    }
  }
  ~Key() {
    if (key_ != nullptr) BCryptDestroyKey(key_);
    if (algorithm_ != nullptr) BCryptCloseAlgorithmProvider(algorithm_, 0);
  }
  Key(const Key&) = delete;
  Key& operator=(const Key&) = delete;

  bool Import(LPCWSTR kind, KeyBlob& blob, ULONG size) {
    return algorithm_ != nullptr && BCryptImportKeyPair(algorithm_, nullptr, kind, &key_,
                                                        reinterpret_cast<PUCHAR>(&blob), size, 0) == 0;
  }
  bool Generate() {
    return algorithm_ != nullptr && BCryptGenerateKeyPair(algorithm_, &key_, 8 * kNumberSize, 0) == 0 &&
           BCryptFinalizeKeyPair(key_, 0) == 0;
  }
  BCRYPT_KEY_HANDLE Get() const { return key_; }

 private:
  BCRYPT_ALG_HANDLE algorithm_ = nullptr;
  BCRYPT_KEY_HANDLE key_ = nullptr;
};

/// The system's functions take non-const pointers but do not write.
PUCHAR Bytes(const std::uint8_t* bytes) { return const_cast<PUCHAR>(bytes); }

}  // namespace

bool IsGoodSignature(const PublicKey& publicKey, SignedDigest digest, const Signature& signature) {
  KeyBlob blob{{BCRYPT_ECDSA_PUBLIC_P256_MAGIC, kNumberSize}, publicKey, {}};
  Key key;
  return key.Import(BCRYPT_ECCPUBLIC_BLOB, blob, kPublicSize) &&
         BCryptVerifySignature(key.Get(), nullptr, Bytes(digest.data()), static_cast<ULONG>(digest.size()),
                               Bytes(signature.data()), static_cast<ULONG>(signature.size()), 0) == 0;
}

std::optional<SigningKey> MakeSigningKey() {
  Key key;
  KeyBlob blob;
  ULONG size = 0;
  if (!key.Generate() || BCryptExportKey(key.Get(), nullptr, BCRYPT_ECCPRIVATE_BLOB,
                                         reinterpret_cast<PUCHAR>(&blob), sizeof blob, &size, 0) != 0) {
    return std::nullopt;
  }
  return SigningKey{blob.secret, blob.publicKey};
}

std::optional<Signature> SignDigest(const SigningKey& signingKey, SignedDigest digest) {
  KeyBlob blob{{BCRYPT_ECDSA_PRIVATE_P256_MAGIC, kNumberSize}, signingKey.publicKey, signingKey.secret};
  Key key;
  Signature signature;
  ULONG size = 0;
  if (!key.Import(BCRYPT_ECCPRIVATE_BLOB, blob, sizeof blob) ||
      BCryptSignHash(key.Get(), nullptr, Bytes(digest.data()), static_cast<ULONG>(digest.size()),
                     signature.data(), static_cast<ULONG>(signature.size()), &size, 0) != 0 ||
      size != signature.size()) {
    return std::nullopt;
  }
  return signature;
}

}  // namespace platform
