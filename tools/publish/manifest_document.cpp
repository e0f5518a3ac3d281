#include "manifest_document.h"

#include <fstream>
#include <sstream>
#include <system_error>
#include <unordered_map>

#include "minijson/minijson.h"
#include "platform/text.h"
#include "publish_error.h"

namespace patcher {
namespace {

namespace fs = std::filesystem;

using MiniJson::Value;
using MiniJson::WriteString;

std::string ReadText(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  std::ostringstream text;
  if (in.peek() != std::ifstream::traits_type::eof()) text << in.rdbuf();
  if (!in.is_open() || in.bad()) throw PublishError("cannot read " + platform::Utf8FromPath(file));
  return text.str();
}

/// The number "since" of each archive, by name. The text has been parsed before.
std::unordered_map<std::string, std::int32_t> ReadSince(const std::string& text) {
  std::unordered_map<std::string, std::int32_t> since;
  std::size_t position = 0;
  const Value document = MiniJson::Parse(text, position);
  const Value* bundles = document.Find("bundles");
  if (bundles == nullptr) return since;
  for (const Value& bundle : bundles->arrayItems) {
    const Value* name = bundle.Find("name");
    const Value* number = bundle.Find("since");
    if (name == nullptr || number == nullptr) continue;
    const double version = number->AsNumber(0);
    if (version >= 0 && version <= INT32_MAX) since[name->AsString("")] = static_cast<std::int32_t>(version);
  }
  return since;
}

void WriteArchive(std::ostream& out, const PublishedArchive& archive) {
  out << "    {\"name\": ";
  WriteString(out, archive.bundle.name);
  out << ", \"size\": " << archive.bundle.size << ", \"sha256\": \"" << archive.bundle.sha256
      << "\", \"since\": " << archive.since << ", \"files\": [";
  const char* separator = "\n      ";
  for (const std::string& path : archive.bundle.files) {
    out << separator;
    WriteString(out, path);
    separator = ",\n      ";
  }
  out << "]}";
}

void WriteFile(std::ostream& out, const PatchFile& file) {
  out << "    {\"path\": ";
  WriteString(out, file.path);
  out << ", \"size\": " << file.size << ", \"sha256\": \"" << file.sha256 << "\", \"url\": ";
  WriteString(out, file.url);
  out << "}";
}

}  // namespace

std::optional<Publication> ReadPublication(const fs::path& file) {
  std::error_code error;
  if (!fs::exists(file, error) && !error) return std::nullopt;
  Publication publication;
  publication.text = ReadText(file);
  std::string reason;
  if (!ParsePatchManifest(publication.text, publication.manifest, reason)) {
    throw PublishError(platform::Utf8FromPath(file) + " is no manifest: " + reason);
  }
  const auto since = ReadSince(publication.text);
  for (PatchBundle& bundle : publication.manifest.bundles) {
    const auto number = since.find(bundle.name);
    publication.archives.push_back({std::move(bundle), number == since.end() ? 0 : number->second});
  }
  publication.manifest.bundles.clear();
  return publication;
}

std::string ManifestText(const Publication& publication) {
  const PatchManifest& manifest = publication.manifest;
  std::ostringstream out;
  out << "{\n  \"version\": " << manifest.version << ",\n  \"patcherVersion\": " << manifest.patcherVersion
      << ",\n  \"patcherUrl\": ";
  WriteString(out, manifest.patcherUrl);
  out << ",\n  \"bundles\": [";
  const char* separator = "\n";
  for (const PublishedArchive& archive : publication.archives) {
    out << separator;
    WriteArchive(out, archive);
    separator = ",\n";
  }
  out << "\n  ],\n  \"files\": [";
  separator = "\n";
  for (const PatchFile& file : manifest.files) {
    out << separator;
    WriteFile(out, file);
    separator = ",\n";
  }
  out << "\n  ]\n}\n";
  return out.str();
}

}  // namespace patcher
