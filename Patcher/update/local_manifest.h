#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "update/patch_manifest.h"

namespace patcher {

/// The content of the record: the digest of each installed file by its path, sorted by unsigned bytes. The
/// record is the file patch_manifest.json. LocalRecord keeps the file and this map equal.
using LocalState = std::map<std::string, std::string, std::less<>>;

/// Reads a record in either form: the server's document or the progress form. If the file cannot be read or
/// parsed, returns an empty state and does not set `version`. Sets `sequence` only if the file is a document
/// that a key of this launcher has signed. `version` and `sequence` may be null.
LocalState LoadLocalManifest(const std::filesystem::path& path, std::int32_t* version,
                             std::uint64_t* sequence = nullptr);

/// The progress form: "version" and "files" with "path" and "sha256", sorted by path, in MiniJson's layout.
std::string RecordText(const LocalState& state, std::int32_t version);

// Parts of that text, for code that appends to it.

/// Appends one entry, without a separator.
void AppendRecordEntry(std::string& text, std::string_view path, std::string_view digest);
/// Between two entries, and after the last one.
inline constexpr std::string_view kRecordSeparator = ",\n";
inline constexpr std::string_view kRecordTail = "\n  ]\n}";

}  // namespace patcher
