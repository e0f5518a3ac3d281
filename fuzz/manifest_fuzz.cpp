#include <filesystem>
#include <map>
#include <string>

#include "fuzz.h"
#include "platform/file_names.h"
#include "platform/text.h"
#include "update/manifest_paths.h"
#include "update/patch_manifest.h"

namespace {

/// The same question as StaysInside, asked of the system's own path arithmetic.
bool LiesBelow(const std::string& path) {
  const std::filesystem::path root = "/install/directory";
  const auto relative = (root / platform::PathFromBytes(path)).lexically_normal().lexically_relative(root);
  return !relative.empty() && *relative.begin() != "..";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  patcher::PatchManifest manifest;
  std::string error;
  if (!patcher::ParsePatchManifest(patcher::AsText(data, size), manifest, error)) {
    patcher::Require(!error.empty(), "a refusal says why");
    return 0;
  }
  for (const patcher::PatchFile& file : manifest.files) {
    if (patcher::StaysInside(file.path)) patcher::Require(LiesBelow(file.path), "accepted paths lie inside");
  }
  if (patcher::PathsAreUsable(manifest)) {
    std::map<std::string, std::string> spellings;
    for (const patcher::PatchFile& file : manifest.files) {
      const auto entry = spellings.emplace(platform::FileIdentity(file.path), file.path).first;
      patcher::Require(entry->second == file.path, "no two paths mean one file");
    }
  }
  return 0;
}
