#include "update/patch_manifest.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <exception>
#include <limits>

#include "minijson/reader.h"

namespace patcher {
namespace {

using MiniJson::Kind;
using MiniJson::Reader;

template <typename Integer>
Integer Truncated(double number) {
  constexpr auto kLow = static_cast<double>(std::numeric_limits<Integer>::min());
  constexpr auto kHigh = static_cast<double>(std::numeric_limits<Integer>::max());
  if (!(number > kLow)) return std::isnan(number) ? Integer{0} : std::numeric_limits<Integer>::min();
  if (number >= kHigh) return std::numeric_limits<Integer>::max();
  return static_cast<Integer>(number);
}

/// A key of a JSON object, and the function that reads its value into the record. The reader is at the start
/// of the value, which may be of any kind.
template <typename Record>
struct Field {
  std::string_view key;
  void (*read)(Reader& reader, Kind kind, Record& record);
};

/// Reads the next value into the record if it is an object, and skips it otherwise. Of equal keys the first
/// counts.
template <typename Record, std::size_t Count>
void ReadRecord(Reader& reader, const Field<Record> (&fields)[Count], Record& record) {
  const Kind kind = reader.Begin();
  if (kind != Kind::Object) return reader.Skip(kind);
  std::array<bool, Count> seen{};
  std::string key;
  while (reader.NextMember()) {
    reader.ReadKey(key);
    const Kind memberKind = reader.Begin();
    const auto at = static_cast<std::size_t>(
        std::find_if(fields, fields + Count, [&](const Field<Record>& field) { return field.key == key; }) -
        fields);
    if (at == Count || seen[at]) {
      reader.Skip(memberKind);
    } else {
      seen[at] = true;
      fields[at].read(reader, memberKind, record);
    }
  }
}

void ReadTextInto(std::string& text, Reader& reader, Kind kind) {
  if (kind != Kind::String) return reader.Skip(kind);
  reader.ReadString(text);
  if (text.size() > kMaxManifestText) throw MiniJson::ParseError("string too long");
}

template <auto Member, typename Record>
void ReadText(Reader& reader, Kind kind, Record& record) {
  ReadTextInto(record.*Member, reader, kind);
}

template <auto Member, typename Record>
void ReadNumber(Reader& reader, Kind kind, Record& record) {
  if (kind != Kind::Number) return reader.Skip(kind);
  auto& number = record.*Member;
  number = Truncated<std::remove_reference_t<decltype(number)>>(reader.NumberValue());
}

/// Unlike for other texts, a value of another kind does not count as missing: see
/// PatchManifest::patcherSha256.
void ReadLauncherDigest(Reader& reader, Kind kind, PatchManifest& manifest) {
  if (kind != Kind::String) manifest.patcherSha256 = "no text";
  ReadText<&PatchManifest::patcherSha256>(reader, kind, manifest);
}

void ReadBundlePaths(Reader& reader, Kind kind, PatchBundle& bundle) {
  if (kind != Kind::Array) return reader.Skip(kind);
  while (reader.NextItem()) {
    const Kind item = reader.Begin();
    ReadTextInto(bundle.files.emplace_back(), reader, item);
  }
}

constexpr Field<PatchBundle> kBundleFields[] = {{"name", ReadText<&PatchBundle::name>},
                                                {"size", ReadNumber<&PatchBundle::size>},
                                                {"sha256", ReadText<&PatchBundle::sha256>},
                                                {"files", ReadBundlePaths}};

constexpr Field<PatchFile> kFileFields[] = {{"path", ReadText<&PatchFile::path>},
                                            {"size", ReadNumber<&PatchFile::size>},
                                            {"sha256", ReadText<&PatchFile::sha256>},
                                            {"url", ReadText<&PatchFile::url>}};

void ReadBundles(Reader& reader, Kind kind, PatchManifest& manifest) {
  if (kind != Kind::Array) return reader.Skip(kind);
  while (reader.NextItem()) {
    PatchBundle bundle;
    ReadRecord(reader, kBundleFields, bundle);
    if (!bundle.name.empty() && !bundle.sha256.empty()) manifest.bundles.push_back(std::move(bundle));
  }
}

void ReadFiles(Reader& reader, Kind kind, PatchManifest& manifest) {
  if (kind != Kind::Array) return reader.Skip(kind);
  while (reader.NextItem()) ReadRecord(reader, kFileFields, manifest.files.emplace_back());
}

constexpr Field<PatchManifest> kManifestFields[] = {
    {"version", ReadNumber<&PatchManifest::version>},
    {"sequence", ReadNumber<&PatchManifest::sequence>},
    {"patcherVersion", ReadNumber<&PatchManifest::patcherVersion>},
    {"patcherUrl", ReadText<&PatchManifest::patcherUrl>},
    {"patcherSha256", ReadLauncherDigest},
    {"bundles", ReadBundles},
    {"files", ReadFiles}};

}  // namespace

bool ParsePatchManifest(std::string_view text, PatchManifest& manifest, std::string& error) {
  if (text.size() > kMaxManifestSize) {
    error = "text too large";
    return false;
  }
  try {
    // Reads without a tree of values, which would need several times the memory of the manifest.
    Reader reader(text, 0);
    ReadRecord(reader, kManifestFields, manifest);
    manifest.valueSize = reader.Position();
    return true;
  } catch (const std::exception& failure) {
    error = failure.what();
    return false;
  }
}

}  // namespace patcher
