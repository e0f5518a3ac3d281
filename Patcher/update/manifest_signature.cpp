#include "update/manifest_signature.h"

#include <algorithm>
#include <array>
#include <exception>
#include <stdexcept>

#include "integrity/digest/sha256.h"
#include "minijson/reader.h"
#include "shared/hex.h"

namespace patcher {
namespace {

using MiniJson::Kind;
using MiniJson::Reader;

constexpr std::size_t kMaxLine = 1024;  // bytes; far longer than any line of Sign
constexpr std::size_t kIdDigits = 16;
constexpr std::string_view kSpace = " \t\r\n";

std::array<std::uint8_t, 32> DigestOf(std::string_view text) {
  Sha256 sha256;
  platform::DigestHash hash = sha256.BeginHash();
  hash.Update(text.data(), text.size());
  return FromHex<32>(sha256.FinishHex(hash)).value();
}

std::string SignatureLine(const platform::SigningKey& key, const platform::Signature& signature) {
  return "{\"signature\": \"" + ToHex(signature) + "\", \"key\": \"" +
         ToHex(key.publicKey).substr(0, kIdDigits) + "\"}\n";
}

/// The text of the first member "signature"; empty if it is not a text. Raises the exceptions of the reader.
std::string SignatureText(std::string_view line) {
  Reader reader(line, 0);
  if (reader.Begin() != Kind::Object) return {};
  std::string key;
  std::string text;
  for (bool isRead = false; reader.NextMember();) {
    reader.ReadKey(key);
    const Kind kind = reader.Begin();
    const bool isSignature = key == "signature" && !isRead;
    isRead = isRead || isSignature;
    if (isSignature && kind == Kind::String) {
      reader.ReadString(text);
    } else {
      reader.Skip(kind);
    }
  }
  const bool isWholeLine = line.find_first_not_of(kSpace, reader.Position()) == std::string_view::npos;
  return isWholeLine ? text : std::string();
}

}  // namespace

std::optional<platform::Signature> ReadSignature(std::string_view afterValue) {
  const std::size_t start = std::min(afterValue.find_first_not_of(kSpace), afterValue.size());
  const std::string_view rest = afterValue.substr(start);
  const std::string_view line = rest.substr(0, rest.find('\n'));
  if (line.size() > kMaxLine) return std::nullopt;
  try {
    return FromHex<sizeof(platform::Signature)>(SignatureText(line));
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

bool IsSigned(std::string_view text, std::size_t valueSize, std::span<const platform::PublicKey> keys) {
  const auto signature = ReadSignature(text.substr(valueSize));
  if (!signature) return false;
  const auto digest = DigestOf(text.substr(0, valueSize));
  return std::any_of(keys.begin(), keys.end(), [&](const platform::PublicKey& key) {
    return platform::IsGoodSignature(key, digest, *signature);
  });
}

std::string Sign(std::string_view value, const platform::SigningKey& key) {
  const auto digest = DigestOf(value);
  const auto signature = platform::SignDigest(key, digest);
  if (!signature) throw std::runtime_error("the system cannot sign with this key");
  if (!platform::IsGoodSignature(key.publicKey, digest, *signature)) {
    throw std::runtime_error("the private key does not match the public key");
  }
  return SignatureLine(key, *signature);
}

}  // namespace patcher
