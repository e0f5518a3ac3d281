#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "platform/signature.h"
#include "transport/http_session.h"
#include "update/local_record.h"
#include "update/patch_manifest.h"

namespace patcher {

enum class ServerManifest {
  kUnreachable,  ///< no answer with status 200
  kUnusable,     ///< the document must not be used
  kGood,
};

/// Fetches the server's document into `text`, parses it into `manifest` and checks it. Runs, verifications
/// and repairs all use this function. The document must parse, and its paths must be usable (PathsAreUsable).
/// A launcher with keys (LauncherKeys) also loads `record`, refuses a document with a SignatureFault or a
/// SequenceFault, and calls RemoveUnverifiedLauncher. Each of these writes a line to the debug log. Without
/// keys the record is not loaded.
[[nodiscard]] ServerManifest FetchServerManifest(HttpSession& session, LocalRecord& record, std::string& text,
                                                 PatchManifest& manifest);

/// Why `text` is not signed by one of the keys; empty if it is. `manifest` is the parsed `text`.
std::string SignatureFault(std::string_view text, const PatchManifest& manifest,
                           std::span<const platform::PublicKey> keys);

/// Why a signed manifest must not replace one with the sequence `installed` (LocalRecord::Sequence); empty if
/// it may. Old documents have valid signatures, so a server could otherwise bring back a version with faults
/// that were fixed since.
std::string SequenceFault(const PatchManifest& manifest, std::uint64_t installed);

/// Removes the announced launcher from a manifest that has no digest of it. True if it removed one.
bool RemoveUnverifiedLauncher(PatchManifest& manifest);

}  // namespace patcher
