#include "manifest_document.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <exception>
#include <fstream>
#include <functional>
#include <limits>
#include <sstream>
#include <system_error>
#include <unordered_map>
#include <utility>

#include "minijson/minijson.h"
#include "minijson/reader.h"
#include "platform/file_reader.h"
#include "platform/text.h"
#include "publish_error.h"
#include "shared/retry_while_held.h"
#include "update/manifest_paths.h"

namespace patcher::publisher {
namespace {

namespace fs = std::filesystem;

using MiniJson::Kind;
using MiniJson::Reader;
using MiniJson::WriteString;

/// JSON numbers are read as doubles, which are not exact above 2^53.
template <typename Integer>
constexpr double kHighest = std::min(static_cast<double>(std::numeric_limits<Integer>::max()),
                                     9007199254740992.0);

/// Nothing if there is no such file.
std::optional<std::string> ReadText(const fs::path& file) {
  std::error_code error;
  if (!fs::exists(file, error) && !error) return std::nullopt;
  if (error) throw FileError("cannot read", file, error);
  // If another program still holds the file, opening it below fails with the reason.
  static_cast<void>(RetryWhileHeld([&file] { return platform::FileReader(file).OpenError(); }));
  errno = 0;
  std::ifstream in(file, std::ios::binary);
  std::string text;
  std::array<char, 65536> block;
  // The parser refuses a text above the limit.
  while (in && text.size() <= kMaxManifestSize) {
    errno = 0;
    in.read(block.data(), block.size());
    text.append(block.data(), static_cast<std::size_t>(in.gcount()));
  }
  if (!in.is_open() || in.bad()) throw FileError("cannot read", file, StreamReason());
  return text;
}

ManifestError NoManifest(const std::string& source, const std::string& reason) {
  return ManifestError(source + " is not a manifest: " + reason);
}

/// A number from 0 to the highest of its type, truncated; 0 for anything else.
template <typename Integer>
Integer ReadNumber(Reader& reader, Kind kind) {
  if (kind != Kind::Number) {
    reader.Skip(kind);
    return 0;
  }
  const double number = reader.NumberValue();
  return number >= 0 && number <= kHighest<Integer> ? static_cast<Integer>(number) : Integer{0};
}

/// Empty if the value is not a text.
std::string ReadString(Reader& reader, Kind kind) {
  std::string text;
  if (kind == Kind::String) {
    reader.ReadString(text);
  } else {
    reader.Skip(kind);
  }
  return text;
}

using TakeMember = std::function<void(const std::string& key, Kind kind)>;

/// Calls `take` for each member of an object, to read or skip its value.
void ForEachMember(Reader& reader, Kind kind, const TakeMember& take) {
  if (kind != Kind::Object) return reader.Skip(kind);
  std::string key;
  while (reader.NextMember()) {
    reader.ReadKey(key);
    take(key, reader.Begin());
  }
}

DocumentHead HeadOf(const std::string& text) {
  DocumentHead head;
  Reader reader(text, 0);
  ForEachMember(reader, reader.Begin(), [&](const std::string& key, Kind kind) {
    if (key == "version") {
      head.version = ReadNumber<std::int32_t>(reader, kind);
    } else if (key == "sequence") {
      head.sequence = ReadNumber<std::uint64_t>(reader, kind);
    } else if (key == "patcherVersion") {
      head.launcher.build = ReadNumber<std::int32_t>(reader, kind);
    } else if (key == "patcherUrl") {
      head.launcher.name = ReadString(reader, kind);
    } else if (key == "patcherSha256") {
      head.launcher.sha256 = ReadString(reader, kind);
    } else if (key == "held" && kind == Kind::Bool) {
      head.held = reader.BoolValue();
    } else {
      reader.Skip(kind);
    }
  });
  return head;
}

/// The number "since" of each archive, by name.
std::unordered_map<std::string, std::int32_t> SinceOf(const std::string& text) {
  std::unordered_map<std::string, std::int32_t> since;
  Reader reader(text, 0);
  ForEachMember(reader, reader.Begin(), [&](const std::string& key, Kind kind) {
    if (key != "bundles" || kind != Kind::Array) return reader.Skip(kind);
    while (reader.NextItem()) {
      std::string name;
      std::int32_t version = 0;
      ForEachMember(reader, reader.Begin(), [&](const std::string& member, Kind memberKind) {
        if (member == "name") {
          name = ReadString(reader, memberKind);
        } else if (member == "since") {
          version = ReadNumber<std::int32_t>(reader, memberKind);
        } else {
          reader.Skip(memberKind);
        }
      });
      since.emplace(std::move(name), version);
    }
  });
  return since;
}

/// Writes each item, with commas between them.
template <typename Items, typename WriteItem>
void WriteList(std::ostream& out, const Items& items, WriteItem writeItem) {
  out << '[';
  bool first = true;
  for (const auto& item : items) {
    if (!std::exchange(first, false)) out << ',';
    writeItem(item);
  }
  out << ']';
}

void WriteArchive(std::ostream& out, const PublishedArchive& archive) {
  out << "{\"name\":";
  WriteString(out, archive.bundle.name);
  out << ",\"size\":" << archive.bundle.size << ",\"sha256\":\"" << archive.bundle.sha256
      << "\",\"since\":" << archive.since << ",\"files\":";
  WriteList(out, archive.bundle.files, [&](const std::string& path) { WriteString(out, path); });
  out << '}';
}

void WriteFile(std::ostream& out, const PatchFile& file) {
  out << "{\"path\":";
  WriteString(out, file.path);
  out << ",\"size\":" << file.size << ",\"sha256\":\"" << file.sha256 << "\",\"url\":";
  WriteString(out, file.url);
  out << '}';
}

/// A manifest that launchers would refuse must not be published.
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
  return {manifest.patcherVersion, manifest.patcherUrl, manifest.patcherSha256};
}

void Announce(Publication& publication, const AnnouncedLauncher& launcher) {
  publication.manifest.patcherVersion = launcher.build;
  publication.manifest.patcherUrl = launcher.name;
  publication.manifest.patcherSha256 = launcher.sha256;
}

std::optional<Publication> ReadPublication(const fs::path& file) {
  auto text = ReadText(file);
  if (!text) return std::nullopt;
  return ParsePublication(std::move(*text), platform::Utf8FromPath(file));
}

Publication ParsePublication(std::string text, const std::string& source) {
  Publication publication;
  publication.text = std::move(text);
  std::string reason;
  if (!ParsePatchManifest(publication.text, publication.manifest, reason)) throw NoManifest(source, reason);
  const DocumentHead head = HeadOf(publication.text);
  publication.sequence = head.sequence;
  publication.held = head.held;
  const auto since = SinceOf(publication.text);
  for (PatchBundle& bundle : publication.manifest.bundles) {
    const auto number = since.find(bundle.name);
    publication.archives.push_back({std::move(bundle), number != since.end() ? number->second : 0});
  }
  publication.manifest.bundles.clear();
  return publication;
}

std::optional<DocumentHead> ReadHead(const fs::path& file) {
  const auto text = ReadText(file);
  if (!text) return std::nullopt;
  try {
    return HeadOf(*text);
  } catch (const std::exception& failure) {
    throw NoManifest(platform::Utf8FromPath(file), failure.what());
  }
}

std::string JsonText(const Publication& publication) {
  const PatchManifest& manifest = publication.manifest;
  std::ostringstream out;
  out << "{\"version\":" << manifest.version << ",\"sequence\":" << publication.sequence;
  if (publication.held) out << ",\"held\":true";
  out << ",\"patcherVersion\":" << manifest.patcherVersion << ",\"patcherUrl\":";
  WriteString(out, manifest.patcherUrl);
  if (!manifest.patcherSha256.empty()) {
    out << ",\"patcherSha256\":";
    WriteString(out, manifest.patcherSha256);
  }
  out << ",\"bundles\":";
  WriteList(out, publication.archives, [&](const PublishedArchive& archive) { WriteArchive(out, archive); });
  out << ",\"files\":";
  WriteList(out, manifest.files, [&](const PatchFile& file) { WriteFile(out, file); });
  out << '}';
  return out.str();
}

std::string ManifestText(const Publication& publication) {
  std::string text = JsonText(publication) + "\n";
  RequireAcceptable(text);
  return text;
}

}  // namespace patcher::publisher
