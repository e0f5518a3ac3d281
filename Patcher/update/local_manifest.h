#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "update/patch_manifest.h"

namespace patcher {

/// What the launcher believes is installed: path to digest, ordered by unsigned bytes.
using LocalState = std::map<std::string, std::string, std::less<>>;

/// Reads patch_manifest.json in either of its forms: the server's document or the progress form.
/// A file that cannot be read or does not parse gives an empty state, and `version` is then not written.
/// `version` may be null.
LocalState LoadLocalManifest(const std::filesystem::path& path, std::int32_t* version);

/// The progress form: "version" and "files" with "path" and "sha256", sorted by path, in MiniJson's layout.
std::string LocalManifestText(const LocalState& state, std::int32_t version);

// Pieces of that text, for a writer that appends to it.

/// One entry, without the comma or line feed around it.
void AppendLocalManifestEntry(std::string& text, std::string_view path, std::string_view digest);
/// Between two entries, and after the last one.
inline constexpr std::string_view kLocalManifestSeparator = ",\n";
inline constexpr std::string_view kLocalManifestTail = "\n  ]\n}";

}  // namespace patcher
