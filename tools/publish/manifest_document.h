#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "update/patch_manifest.h"

namespace patcher {

/// An archive of the manifest, and the version that last changed all of its files. The launcher does not read
/// that number.
struct PublishedArchive {
  PatchBundle bundle;
  std::int32_t since = 0;
};

/// A manifest as it was or will be published. The archives stand in `archives`, not in `manifest.bundles`.
struct Publication {
  PatchManifest manifest;
  std::vector<PublishedArchive> archives;
  std::string text;  ///< the document itself
};

/// Reads a published manifest; nothing if there is no such file. Raises PublishError if it cannot be read or
/// is no manifest.
std::optional<Publication> ReadPublication(const std::filesystem::path& file);

/// The document of `manifest` and `archives`.
std::string ManifestText(const Publication& publication);

}  // namespace patcher
