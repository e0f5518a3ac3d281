#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "platform/signature.h"

namespace patcher {

// A signed document is a JSON value and, after it, one line: {"signature": HEX, "key": ID}. The line is white
// space to readers that know no signatures: they stop at the end of the value. What is signed is every byte
// from the first of the document to the last of the value. What comes after the line has no meaning. HEX are
// the 128 digits of platform::Signature; ID says to people which key has signed: the first 16 digits of the
// public key.

/// The signature in what follows a document's value; nothing if it does not begin with a signature line.
std::optional<platform::Signature> ReadSignature(std::string_view afterValue);

/// Whether one of the keys has signed `text`, whose value has `valueSize` bytes (PatchManifest::valueSize).
bool IsSigned(std::string_view text, std::size_t valueSize, std::span<const platform::PublicKey> keys);

/// The line for a document of which `value` is everything up to the end of the value. Raises
/// std::runtime_error if the system cannot sign with the key, or if its halves do not belong together.
std::string Sign(std::string_view value, const platform::SigningKey& key);

}  // namespace patcher
