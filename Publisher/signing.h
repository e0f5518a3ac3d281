#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "manifest_document.h"
#include "platform/signature.h"

namespace patcher::publisher {

// A key file is one line of text: "patch-publish-key", the secret as 64 hexadecimal digits, and the public
// key as 128.

/// Makes a key and writes it to a new file that only its owner can read. Returns the public key in digits.
/// Raises PublishError, also if there is a file of this name.
std::string MakeKeyFile(const std::filesystem::path& file);

/// What a command line says about signatures.
struct SigningRequest {
  std::filesystem::path keyFile;  ///< empty: do not sign
  bool allowUnsigned = false;     ///< even if what players have is signed
};

/// Signs the documents of one publication, or leaves them unsigned.
class DocumentSigner {
 public:
  /// Reads the key file. Raises PublishError.
  explicit DocumentSigner(const SigningRequest& request);

  /// Raises PublishError if players would get an unsigned document after this signed one, unless the request
  /// allows that. `present` may be null.
  void RequireKeyAfter(const Publication* present) const;

  /// Whether a document has the signature that this object would give it, or needs none.
  bool IsContentWith(const Publication& document) const;

  /// A manifest as it is to be published: signed, if there is a key. Raises PublishError.
  std::string Finished(std::string manifestText) const;

 private:
  std::optional<platform::SigningKey> key_;
  bool allowUnsigned_;
};

/// What a check with a public key finds about the manifest that is live; empty if that key has signed it.
/// Raises PublishError if `publicKey` is none.
std::string SignatureFinding(const std::filesystem::path& www, std::string_view publicKey);

}  // namespace patcher::publisher
