// Input: a document and whatever follows it.
#include "fuzz.h"
#include "platform/signature.h"
#include "update/manifest_signature.h"
#include "update/server_manifest.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const platform::SigningKey key = platform::MakeSigningKey().value();
  const std::string text(patcher::AsText(data, size));
  patcher::PatchManifest manifest;
  std::string error;
  if (!patcher::ParsePatchManifest(text, manifest, error)) return 0;
  patcher::Require(manifest.valueSize <= size, "the value lies in the text");
  patcher::Require(!patcher::SignatureFault(text, manifest, {&key.publicKey, 1}).empty(),
                   "nobody has the key");
  const std::string value = text.substr(0, manifest.valueSize);
  const std::string signedText = value + "\n" + patcher::Sign(value, key) + text.substr(manifest.valueSize);
  patcher::Require(patcher::SignatureFault(signedText, manifest, {&key.publicKey, 1}).empty(),
                   "what follows the line does not matter");
  return 0;
}
