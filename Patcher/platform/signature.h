#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>

namespace platform {

// ECDSA on the curve P-256 (FIPS 186-4). All numbers are 32 bytes, the highest first. Any thread.

/// The coordinates X and Y of a point.
using PublicKey = std::array<std::uint8_t, 64>;
/// The numbers r and s.
using Signature = std::array<std::uint8_t, 64>;
/// The SHA-256 of what is signed.
using SignedDigest = std::span<const std::uint8_t, 32>;

/// A private key with its public one.
struct SigningKey {
  std::array<std::uint8_t, 32> secret{};
  PublicKey publicKey{};
};

/// Whether the private key of `key` has made this signature. False too if `key` is no point of the curve, or
/// if the system cannot verify.
[[nodiscard]] bool IsGoodSignature(const PublicKey& key, SignedDigest digest, const Signature& signature);

/// A new key from the system's random numbers; nothing if the system makes none.
[[nodiscard]] std::optional<SigningKey> MakeSigningKey();

/// Nothing if the system cannot sign with this key. It may accept a key whose halves do not belong together:
/// a caller that has read one from a file verifies what it has signed. Two signatures of one digest differ.
[[nodiscard]] std::optional<Signature> SignDigest(const SigningKey& key, SignedDigest digest);

}  // namespace platform
