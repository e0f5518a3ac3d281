// Input: a document and whatever follows it.
#include "fuzz.h"
#include "update/manifest_signature.h"
#include "update/server_manifest.h"

void patcher::Fuzz(std::string_view input) {
  static const platform::SigningKey key = platform::MakeSigningKey().value();
  PatchManifest manifest;
  std::string error;
  if (!ParsePatchManifest(input, manifest, error)) return;
  Require(manifest.valueSize <= input.size(), "the value lies in the text");
  Require(!SignatureFault(input, manifest, {&key.publicKey, 1}).empty(), "nobody has the key");
  std::string text(input);
  text.insert(manifest.valueSize, "\n" + Sign(text.substr(0, manifest.valueSize), key));
  Require(SignatureFault(text, manifest, {&key.publicKey, 1}).empty(),
          "what follows the line does not matter");
}
