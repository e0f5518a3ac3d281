#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "platform/signature.h"

namespace patcher {

// A signed document is a JSON value and, after it, one line: {"signature": HEX, "key": ID}. Readers without
// support for signatures ignore the line, since they stop at the end of the value. The signature covers every
// byte from the start of the document to the end of the value. Anything after the line is ignored. HEX is the
// 128 digits of platform::Signature. ID is the first 16 digits of the public key; it only shows people which
// key was used.

/// Reads the signature from the text after a document's value. Nothing if that does not begin with a
/// signature line.
std::optional<platform::Signature> ReadSignature(std::string_view afterValue);

/// Whether one of the keys has signed `text`. `valueSize` is PatchManifest::valueSize of that text.
bool IsSigned(std::string_view text, std::size_t valueSize, std::span<const platform::PublicKey> keys);

/// Returns the signature line. `value` is the document up to the end of its value. Raises std::runtime_error
/// if the system cannot sign with the key, or if its private and public parts do not match.
std::string Sign(std::string_view value, const platform::SigningKey& key);

}  // namespace patcher
