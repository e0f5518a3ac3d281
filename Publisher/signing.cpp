#include "signing.h"

#include <exception>
#include <fstream>
#include <system_error>

#include "content_store.h"
#include "is_below.h"
#include "platform/files.h"
#include "platform/text.h"
#include "publish_error.h"
#include "shared/hex.h"
#include "update/manifest_signature.h"

namespace patcher::publisher {
namespace {

namespace fs = std::filesystem;

constexpr char kLabel[] = "patch-publish-key";

platform::SigningKey ReadKeyFile(const fs::path& file) {
  std::error_code error;
  if (!fs::exists(file, error)) {
    throw FileError("cannot read", file,
                    error ? error : std::make_error_code(std::errc::no_such_file_or_directory));
  }
  std::ifstream in(file, std::ios::binary);
  std::string label;
  std::string secret;
  std::string publicKey;
  in >> label >> secret >> publicKey;
  const auto secretBytes = FromHex<sizeof(platform::SigningKey::secret)>(secret);
  const auto publicBytes = FromHex<sizeof(platform::PublicKey)>(publicKey);
  if (label != kLabel || !secretBytes || !publicBytes) {
    throw PublishError(platform::Utf8FromPath(file) + " is not a key file from patch-publish keygen");
  }
  return {*secretBytes, *publicBytes};
}

bool HasSignature(const Publication& document) {
  return ReadSignature(std::string_view(document.text).substr(document.manifest.valueSize)).has_value();
}

bool IsSignedBy(const Publication& document, const platform::PublicKey& key) {
  return IsSigned(document.text, document.manifest.valueSize, {&key, 1});
}

}  // namespace

std::string MakeKeyFile(const fs::path& file) {
  const auto key = platform::MakeSigningKey();
  if (!key) throw PublishError("the system cannot create a key");
  std::string publicKey = ToHex(key->publicKey);
  const std::string line = std::string(kLabel) + " " + ToHex(key->secret) + " " + publicKey + "\n";
  if (const int error = platform::CreatePrivateFile(file, line); error != 0) {
    throw FileError("cannot create", file, SystemReason(error));
  }
  return publicKey;
}

void RequireKeyOutside(const SigningRequest& request, const fs::path& folder) {
  if (request.keyFile.empty() || !IsBelow(request.keyFile, folder)) return;
  throw PublishError("the private key must not be in " + platform::Utf8FromPath(folder) +
                     ": everyone could download it");
}

DocumentSigner::DocumentSigner(const SigningRequest& request, const fs::path& www)
    : allowUnsigned_(request.allowUnsigned) {
  RequireKeyOutside(request, www);
  if (!request.keyFile.empty()) key_ = ReadKeyFile(request.keyFile);
}

void DocumentSigner::NoticeOtherKey(const Publication* present, Progress& progress) const {
  if (!key_ || present == nullptr || !HasSignature(*present) || IsSignedBy(*present, key_->publicKey)) return;
  progress.Notice("version " + std::to_string(present->manifest.version) +
                  " is signed by another key: launchers without this key refuse the new manifest");
}

void DocumentSigner::RequireKeyAfter(const Publication* present) const {
  if (key_ || allowUnsigned_ || present == nullptr || !HasSignature(*present)) return;
  throw PublishError("version " + std::to_string(present->manifest.version) +
                     " is signed, and launchers with a key refuse an unsigned manifest: --sign KEY signs, "
                     "--unsigned publishes without a signature nevertheless");
}

bool DocumentSigner::Accepts(const Publication& document) const {
  if (key_) return IsSignedBy(document, key_->publicKey);
  return !allowUnsigned_ || !HasSignature(document);
}

std::string DocumentSigner::WithSignature(std::string manifestText) const {
  if (!key_) return manifestText;
  try {
    const std::size_t valueSize = manifestText.find_last_of('}') + 1;
    manifestText += Sign(std::string_view(manifestText).substr(0, valueSize), *key_);
  } catch (const std::exception& failure) {
    throw PublishError(std::string("cannot sign: ") + failure.what());
  }
  if (manifestText.size() > kMaxManifestSize) throw PublishError("the signed manifest is too large");
  return manifestText;
}

std::string SignatureFinding(const fs::path& www, const platform::PublicKey& key) {
  const auto document = ReadPublication(ContentStore(www).ManifestFile());
  if (!document) return "there is no version.json";
  if (IsSignedBy(*document, key)) return {};
  return HasSignature(*document) ? "version.json has no good signature by this key"
                                 : "version.json is not signed";
}

}  // namespace patcher::publisher
