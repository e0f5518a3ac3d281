#include "update/patch_manifest.h"

#include <cmath>
#include <exception>
#include <limits>

#include "minijson/minijson.h"

namespace patcher {
namespace {

using MiniJson::Value;

template <typename Integer>
Integer Truncated(double number) {
  constexpr auto kLow = static_cast<double>(std::numeric_limits<Integer>::min());
  constexpr auto kHigh = static_cast<double>(std::numeric_limits<Integer>::max());
  if (!(number > kLow)) return std::isnan(number) ? Integer{0} : std::numeric_limits<Integer>::min();
  if (number >= kHigh) return std::numeric_limits<Integer>::max();
  return static_cast<Integer>(number);
}

template <typename Integer>
Integer NumberMember(const Value& object, std::string_view key) {
  const Value* member = object.Find(key);
  return Truncated<Integer>(member != nullptr ? member->AsNumber(0.0) : 0.0);
}

std::string StringMember(const Value& object, std::string_view key) {
  const Value* member = object.Find(key);
  return member != nullptr ? member->AsString("") : std::string();
}

const std::vector<Value>& ArrayMember(const Value& object, std::string_view key) {
  static const std::vector<Value> kNone;
  const Value* member = object.Find(key);
  return member != nullptr ? member->arrayItems : kNone;
}

PatchBundle ReadBundle(const Value& item) {
  PatchBundle bundle{StringMember(item, "name"),
                     NumberMember<std::uint64_t>(item, "size"),
                     StringMember(item, "sha256"),
                     {}};
  const std::vector<Value>& files = ArrayMember(item, "files");
  bundle.files.reserve(files.size());
  for (const Value& path : files) bundle.files.push_back(path.AsString(""));
  return bundle;
}

}  // namespace

bool ParsePatchManifest(std::string_view text, PatchManifest& manifest, std::string& error) {
  if (text.size() > kMaxManifestSize) {
    error = "text too large";
    return false;
  }
  try {
    std::size_t position = 0;
    const Value document = MiniJson::Parse(text, position);
    manifest.version = NumberMember<std::int32_t>(document, "version");
    manifest.patcherVersion = NumberMember<std::int32_t>(document, "patcherVersion");
    manifest.patcherUrl = StringMember(document, "patcherUrl");
    for (const Value& item : ArrayMember(document, "bundles")) {
      PatchBundle bundle = ReadBundle(item);
      if (!bundle.name.empty() && !bundle.sha256.empty()) manifest.bundles.push_back(std::move(bundle));
    }
    const std::vector<Value>& files = ArrayMember(document, "files");
    manifest.files.reserve(files.size());
    for (const Value& item : files) {
      manifest.files.push_back({StringMember(item, "path"), NumberMember<std::uint64_t>(item, "size"),
                                StringMember(item, "sha256"), StringMember(item, "url")});
    }
    return true;
  } catch (const std::exception& failure) {
    error = failure.what();
    return false;
  }
}

}  // namespace patcher
