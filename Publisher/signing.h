#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "manifest_document.h"
#include "platform/signature.h"
#include "progress_line.h"

namespace patcher::publisher {

// A key file is one line of text: "patch-publish-key", the private key as 64 hexadecimal digits, and the
// public key as 128.

/// Makes a key and writes it to a new file that only its owner can read. Returns the hexadecimal digits of
/// the public key. Raises PublishError, also if the file exists.
[[nodiscard]] std::string MakeKeyFile(const std::filesystem::path& file);

/// The options of a command line for signatures.
struct SigningRequest {
  std::filesystem::path keyFile;  ///< empty: do not sign
  bool allowUnsigned = false;     ///< even after a signed version
};

/// Raises PublishError if the key file is in the folder, which everyone can download.
void RequireKeyOutside(const SigningRequest& request, const std::filesystem::path& folder);

/// Signs the documents of one publication, or leaves them unsigned.
class DocumentSigner {
 public:
  /// Reads the key file, if there is one. Raises PublishError, also if the file is below `www`.
  DocumentSigner(const SigningRequest& request, const std::filesystem::path& www);

  /// Raises PublishError if `present` is signed and the next document would not be, unless the request allows
  /// that. `present` may be null.
  void RequireKeyAfter(const Publication* present) const;
  /// Prints a notice if another key has signed `present`, which is what players have, and may be null.
  void NoticeOtherKey(const Publication* present, Progress& progress) const;

  /// Whether a document has a signature by this object's key. Without a key, whether it may stay as it is:
  /// always, unless it is signed and the request asks for an unsigned one.
  [[nodiscard]] bool Accepts(const Publication& document) const;

  /// The manifest to publish: with a signature if there is a key. Raises PublishError.
  [[nodiscard]] std::string WithSignature(std::string manifestText) const;

 private:
  std::optional<platform::SigningKey> key_;
  bool allowUnsigned_;
};

/// Checks whether this key has signed the live manifest. Returns a finding, or an empty text if it has.
[[nodiscard]] std::string SignatureFinding(const std::filesystem::path& www, const platform::PublicKey& key);

}  // namespace patcher::publisher
