#include "update/local_manifest.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <optional>
#include <sstream>
#include <system_error>

#include "minijson/minijson.h"
#include "shared/signing_keys.h"
#include "update/manifest_signature.h"

namespace patcher {
namespace {

void AppendString(std::string& text, std::string_view value) {
  const bool plain = value.find_first_of("\"\\") == std::string_view::npos &&
                     std::none_of(value.begin(), value.end(), [](unsigned char byte) { return byte < 32; });
  if (plain) {
    text += '"';
    text += value;
    text += '"';
    return;
  }
  std::ostringstream out;
  MiniJson::WriteString(out, value);
  text += out.str();
}

/// Reads the file in one call, since it may have many megabytes. Nothing if it cannot be read: it may be a
/// directory.
std::optional<std::string> ReadDocument(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::error_code error;
  const std::uint64_t size = std::filesystem::file_size(path, error);
  if (!in || error || size > kMaxManifestSize) return std::nullopt;
  std::string text(static_cast<std::size_t>(size), '\0');
  in.read(text.data(), static_cast<std::streamsize>(size));
  text.resize(static_cast<std::size_t>(in.gcount()));
  return text;
}

}  // namespace

LocalState LoadLocalManifest(const std::filesystem::path& path, std::int32_t* version,
                             std::uint64_t* sequence) {
  LocalState state;
  std::optional<std::string> text = ReadDocument(path);
  PatchManifest manifest;
  std::string error;
  if (!text || !ParsePatchManifest(*text, manifest, error)) return state;
  if (sequence != nullptr && IsSigned(*text, manifest.valueSize, LauncherKeys()))
    *sequence = manifest.sequence;
  text.reset();  // frees many megabytes
  for (PatchFile& file : manifest.files) {
    state.insert_or_assign(state.end(), std::move(file.path), std::move(file.sha256));
  }
  if (version != nullptr) *version = manifest.version;
  return state;
}

void AppendRecordEntry(std::string& text, std::string_view path, std::string_view digest) {
  text += "    {\n      \"path\": ";
  AppendString(text, path);
  text += ",\n      \"sha256\": ";
  AppendString(text, digest);
  text += "\n    }";
}

std::string RecordText(const LocalState& state, std::int32_t version) {
  std::string text = "{\n  \"version\": " + std::to_string(version) + ",\n  \"files\": [";
  if (state.empty()) return text + "]\n}";
  std::string_view separator = "\n";
  for (const auto& [file, digest] : state) {
    text += separator;
    AppendRecordEntry(text, file, digest);
    separator = kRecordSeparator;
  }
  text += kRecordTail;
  return text;
}

}  // namespace patcher
