// Input: a manifest, then any text.
#include "fuzz.h"
#include "update/manifest_signature.h"
#include "update/server_manifest.h"

void patcher::Fuzz(std::string_view input) {
  static const platform::SigningKey key = platform::MakeSigningKey().value();
  PatchManifest manifest;
  std::string error;
  if (!ParsePatchManifest(input, manifest, error)) return;
  Require(manifest.valueSize <= input.size(), "the value is inside the text");
  Require(!SignatureFault(input, manifest, {&key.publicKey, 1}).empty(), "the private key is unknown");
  std::string text(input);
  text.insert(manifest.valueSize, "\n" + Sign(text.substr(0, manifest.valueSize), key));
  Require(SignatureFault(text, manifest, {&key.publicKey, 1}).empty(),
          "text after the signature line is ignored");
}
