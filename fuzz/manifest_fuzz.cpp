#include <filesystem>
#include <map>

#include "fuzz.h"
#include "platform/file_names.h"
#include "platform/text.h"
#include "update/manifest_paths.h"
#include "update/patch_manifest.h"

void patcher::Fuzz(std::string_view input) {
  PatchManifest manifest;
  std::string error;
  const bool parsed = ParsePatchManifest(input, manifest, error);
  Require(parsed || !error.empty(), "a refusal has a reason");
  if (!parsed) return;
  const std::filesystem::path root = "/install/directory";
  for (const PatchFile& file : manifest.files) {
    const auto place =
        (root / platform::PathFromBytes(file.path)).lexically_normal().lexically_relative(root);
    Require(!StaysInside(file.path) || (!place.empty() && *place.begin() != ".."),
            "accepted paths are inside the install directory");
  }
  if (!PathsAreUsable(manifest)) return;
  std::map<std::string, std::string> spellings;
  for (const PatchFile& file : manifest.files) {
    const auto entry = spellings.emplace(platform::FileIdentity(file.path), file.path).first;
    Require(entry->second == file.path, "no two paths mean the same file");
  }
}
