#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "update/patch_manifest.h"

namespace patcher {

/// The record is the file patch_manifest.json: what is known to be installed. This is its content, path to
/// digest, ordered by unsigned bytes. LocalRecord keeps both in step.
using LocalState = std::map<std::string, std::string, std::less<>>;

/// Reads a record in either of its forms: the server's document or the progress form.
/// A file that cannot be read or does not parse gives an empty state, and `version` is then not written.
/// `version` may be null. So may `sequence`, which is written only if the file is a document that a key of
/// this launcher has signed.
LocalState LoadLocalManifest(const std::filesystem::path& path, std::int32_t* version,
                             std::uint64_t* sequence = nullptr);

/// The progress form: "version" and "files" with "path" and "sha256", sorted by path, in MiniJson's layout.
std::string RecordText(const LocalState& state, std::int32_t version);

// Pieces of that text, for a writer that appends to it.

/// One entry, without the comma or line feed around it.
void AppendRecordEntry(std::string& text, std::string_view path, std::string_view digest);
/// Between two entries, and after the last one.
inline constexpr std::string_view kRecordSeparator = ",\n";
inline constexpr std::string_view kRecordTail = "\n  ]\n}";

}  // namespace patcher
