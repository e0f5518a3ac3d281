#include "update/server_manifest.h"

#include "shared/signing_keys.h"
#include "transport/debug_log.h"
#include "update/manifest_paths.h"
#include "update/manifest_signature.h"

namespace patcher {
namespace {

constexpr char kPath[] = "/patch/version.json";

bool IsRefused(const std::string& reason) {
  if (!reason.empty()) DebugLog::Write("Manifest refused : " + reason);
  return !reason.empty();
}

}  // namespace

std::string SignatureFault(std::string_view text, const PatchManifest& manifest,
                           std::span<const platform::PublicKey> keys) {
  if (IsSigned(text, manifest.valueSize, keys)) return {};
  const bool hasLine = ReadSignature(text.substr(manifest.valueSize)).has_value();
  return hasLine ? "not signed by a key of this launcher" : "no signature";
}

std::string SequenceFault(const PatchManifest& manifest, std::uint64_t installed) {
  if (manifest.sequence >= installed) return {};
  return "sequence " + std::to_string(manifest.sequence) + " is below " + std::to_string(installed) +
         ", which was installed";
}

bool RemoveUnverifiedLauncher(PatchManifest& manifest) {
  if (manifest.patcherUrl.empty() || !manifest.patcherSha256.empty()) return false;
  manifest.patcherUrl.clear();
  return true;
}

ServerManifest FetchServerManifest(HttpSession& session, LocalRecord& record, std::string& text,
                                   PatchManifest& manifest) {
  if (!session.GetToString(kPath, text, kMaxManifestSize + 1)) return ServerManifest::kUnreachable;
  std::string error;
  if (!ParsePatchManifest(text, manifest, error)) return ServerManifest::kUnusable;
  const std::vector<platform::PublicKey>& keys = LauncherKeys();
  if (!keys.empty() && IsRefused(SignatureFault(text, manifest, keys))) return ServerManifest::kUnusable;
  if (!PathsAreUsable(manifest)) return ServerManifest::kUnusable;
  if (keys.empty()) return ServerManifest::kGood;
  // The document is verified, so a record with the same bytes is too.
  record.Load({text, &manifest});
  if (IsRefused(SequenceFault(manifest, record.Sequence()))) return ServerManifest::kUnusable;
  if (RemoveUnverifiedLauncher(manifest))
    DebugLog::Write("Launcher refused : the manifest has no digest of it");
  return ServerManifest::kGood;
}

}  // namespace patcher
