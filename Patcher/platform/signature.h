#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>

namespace platform {

// ECDSA on the curve P-256 (FIPS 186-4). All numbers are 32 bytes, big-endian. Any thread.

/// The coordinates X and Y of a point.
using PublicKey = std::array<std::uint8_t, 64>;
/// The numbers r and s.
using Signature = std::array<std::uint8_t, 64>;
/// The SHA-256 of the signed data.
using SignedDigest = std::span<const std::uint8_t, 32>;

/// A private key with its public key.
struct SigningKey {
  std::array<std::uint8_t, 32> secret{};
  PublicKey publicKey{};
};

/// Whether the private key of `key` made this signature. Also false if `key` is not a point on the curve, or
/// if the system cannot verify signatures.
[[nodiscard]] bool IsGoodSignature(const PublicKey& key, SignedDigest digest, const Signature& signature);

/// A new key from the system's random numbers; nothing if the system cannot create one.
[[nodiscard]] std::optional<SigningKey> MakeSigningKey();

/// Returns nothing if the system cannot sign with this key. The system may accept a key whose halves do not
/// match: a caller that reads a key from a file must verify the signature. Two signatures of one digest
/// differ.
[[nodiscard]] std::optional<Signature> SignDigest(const SigningKey& key, SignedDigest digest);

}  // namespace platform
