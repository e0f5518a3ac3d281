#include "manifest_document.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fstream>
#include <limits>
#include <sstream>
#include <system_error>
#include <unordered_map>

#include "minijson/minijson.h"
#include "platform/text.h"
#include "publish_error.h"
#include "update/manifest_paths.h"

namespace patcher {
namespace {

namespace fs = std::filesystem;

using MiniJson::Value;
using MiniJson::WriteString;

/// Numbers of JSON are doubles here: above 2^53 they are not exact.
template <typename Integer>
constexpr double kHighest = std::min(static_cast<double>(std::numeric_limits<Integer>::max()),
                                     9007199254740992.0);

std::string ReadText(const fs::path& file) {
  errno = 0;
  std::ifstream in(file, std::ios::binary);
  std::string text;
  std::array<char, 65536> block;
  while (in) {
    errno = 0;
    in.read(block.data(), block.size());
    text.append(block.data(), static_cast<std::size_t>(in.gcount()));
    if (text.size() > kMaxManifestSize) break;
  }
  if (!in.is_open() || in.bad()) throw FileError("cannot read", file, StreamReason());
  return text;
}

/// A whole number from 0 to the highest of its type; 0 for anything else.
template <typename Integer>
Integer NumberMember(const Value& object, std::string_view key) {
  const Value* member = object.Find(key);
  const double number = member != nullptr ? member->AsNumber(0) : 0;
  return number >= 0 && number <= kHighest<Integer> ? static_cast<Integer>(number) : Integer{0};
}

/// Reads what only this program needs. The text has been parsed before.
void ReadOwnKeys(Publication& publication) {
  std::size_t position = 0;
  const Value document = MiniJson::Parse(publication.text, position);
  publication.sequence = NumberMember<std::uint64_t>(document, "sequence");
  const Value* held = document.Find("held");
  publication.held = held != nullptr && held->boolValue;
  const Value* digest = document.Find("patcherSha256");
  if (digest != nullptr) publication.launcherDigest = digest->AsString("");

  std::unordered_map<std::string, std::int32_t> since;
  if (const Value* bundles = document.Find("bundles")) {
    for (const Value& bundle : bundles->arrayItems) {
      const Value* name = bundle.Find("name");
      if (name != nullptr) since[name->AsString("")] = NumberMember<std::int32_t>(bundle, "since");
    }
  }
  for (PublishedArchive& archive : publication.archives) archive.since = since[archive.bundle.name];
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

/// Launchers refuse a manifest as a whole; none that they would refuse may be published.
void RequireAcceptable(const std::string& text) {
  PatchManifest parsed;
  std::string reason;
  if (!ParsePatchManifest(text, parsed, reason)) {
    throw PublishError("launchers would not accept this manifest: " + reason);
  }
  if (!PathsAreUsable(parsed)) throw PublishError("launchers would not accept the paths of this manifest");
}

}  // namespace

AnnouncedLauncher LauncherOf(const Publication& publication) {
  const PatchManifest& manifest = publication.manifest;
  return {manifest.patcherVersion, manifest.patcherUrl, publication.launcherDigest};
}

void Announce(Publication& publication, const AnnouncedLauncher& launcher) {
  publication.manifest.patcherVersion = launcher.build;
  publication.manifest.patcherUrl = launcher.name;
  publication.launcherDigest = launcher.sha256;
}

std::optional<Publication> ReadPublication(const fs::path& file) {
  std::error_code error;
  if (!fs::exists(file, error) && !error) return std::nullopt;
  if (error) throw FileError("cannot read", file, error);
  Publication publication;
  publication.text = ReadText(file);
  std::string reason;
  if (!ParsePatchManifest(publication.text, publication.manifest, reason)) {
    throw PublishError(platform::Utf8FromPath(file) + " is no manifest: " + reason);
  }
  for (PatchBundle& bundle : publication.manifest.bundles) {
    publication.archives.push_back({std::move(bundle), 0});
  }
  publication.manifest.bundles.clear();
  ReadOwnKeys(publication);
  return publication;
}

std::string ManifestText(const Publication& publication) {
  const PatchManifest& manifest = publication.manifest;
  std::ostringstream out;
  out << "{\n  \"version\": " << manifest.version << ",\n  \"sequence\": " << publication.sequence;
  if (publication.held) out << ",\n  \"held\": true";
  out << ",\n  \"patcherVersion\": " << manifest.patcherVersion << ",\n  \"patcherUrl\": ";
  WriteString(out, manifest.patcherUrl);
  if (!publication.launcherDigest.empty()) {
    out << ",\n  \"patcherSha256\": ";
    WriteString(out, publication.launcherDigest);
  }
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
  std::string text = out.str();
  RequireAcceptable(text);
  return text;
}

}  // namespace patcher
