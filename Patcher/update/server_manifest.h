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
  kUnusable,     ///< what came must not be acted upon
  kGood,
};

/// The one way to the server's document, for runs, verifications and repairs: fetches it into `text`, reads
/// it into `manifest` and judges it. It must parse, and its paths must be usable (PathsAreUsable). A launcher
/// with keys (LauncherKeys) also refuses what has a SignatureFault or a SequenceFault, for which it loads
/// `record`, and takes out a launcher as TakeOutUnprovenLauncher says; each with a line in the debug log.
/// Without keys the record is not loaded.
[[nodiscard]] ServerManifest FetchServerManifest(HttpSession& session, LocalRecord& record, std::string& text,
                                                 PatchManifest& manifest);

/// Why `text`, of which `manifest` was read, is not a document that one of the keys has signed; empty if it
/// is.
std::string SignatureFault(std::string_view text, const PatchManifest& manifest,
                           std::span<const platform::PublicKey> keys);

/// Why a signed manifest must not follow that of the sequence `installed` (LocalRecord::Sequence); empty if
/// it may. Old documents stay well signed: a server could bring back a game with faults that were mended
/// since.
std::string SequenceFault(const PatchManifest& manifest, std::uint64_t installed);

/// Makes a manifest that announces a launcher without its digest announce none. True if it was one.
bool TakeOutUnprovenLauncher(PatchManifest& manifest);

}  // namespace patcher
