#include "update/local_manifest.h"

#include <algorithm>
#include <fstream>
#include <sstream>

#include "minijson/minijson.h"
#include "update/patch_manifest.h"

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

}  // namespace

LocalState LoadLocalManifest(const std::filesystem::path& path, std::int32_t* version) {
  LocalState state;
  std::ifstream in(path, std::ios::binary);
  if (!in) return state;
  // Not through an iterator: that would raise where the file is a directory or the disk fails.
  std::ostringstream text;
  text << in.rdbuf();
  PatchManifest manifest;
  std::string error;
  if (!ParsePatchManifest(text.str(), manifest, error)) return state;
  for (PatchFile& file : manifest.files) {
    state.insert_or_assign(state.end(), std::move(file.path), std::move(file.sha256));
  }
  if (version != nullptr) *version = manifest.version;
  return state;
}

std::string LocalManifestHead(std::int32_t version) {
  return "{\n  \"version\": " + std::to_string(version) + ",\n  \"files\": [\n";
}

void AppendLocalManifestEntry(std::string& text, std::string_view path, std::string_view digest) {
  text += "    {\n      \"path\": ";
  AppendString(text, path);
  text += ",\n      \"sha256\": ";
  AppendString(text, digest);
  text += "\n    }";
}

void SaveLocalManifest(const std::filesystem::path& path, const LocalState& state, std::int32_t version) {
  std::string text;
  if (state.empty()) {
    text = "{\n  \"version\": " + std::to_string(version) + ",\n  \"files\": []\n}";
  } else {
    text = LocalManifestHead(version);
    for (const auto& [file, digest] : state) {
      if (&file != &state.begin()->first) text += kLocalManifestSeparator;
      AppendLocalManifestEntry(text, file, digest);
    }
    text += kLocalManifestTail;
  }
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(text.data(), static_cast<std::streamsize>(text.size()));
}

}  // namespace patcher
