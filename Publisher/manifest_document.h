#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "update/patch_manifest.h"

namespace patcher::publisher {

/// An archive of the manifest, and the version that last changed all of its files. The launcher does not read
/// that number.
struct PublishedArchive {
  PatchBundle bundle;
  std::int32_t since = 0;
};

/// The launcher that a manifest announces.
struct AnnouncedLauncher {
  std::int32_t build = 0;
  std::string name;    ///< below "/patch/"; empty: none is announced
  std::string sha256;  ///< empty in manifests of earlier releases
};

/// What a manifest says beside its files and archives.
struct DocumentHead {
  std::int32_t version = 0;
  /// Raised with every document that is published or put live: orders them in time. 0 in manifests of earlier
  /// releases.
  std::uint64_t sequence = 0;
  bool held = false;  ///< published without going live so far
  AnnouncedLauncher launcher;
};

/// A manifest as it was or will be published. The archives are in `archives`, not in `manifest.bundles`.
struct Publication {
  PatchManifest manifest;
  std::vector<PublishedArchive> archives;
  std::uint64_t sequence = 0;  ///< as in DocumentHead
  bool held = false;           ///< as in DocumentHead
  std::string text;            ///< the document itself, with whatever follows the JSON value
};

AnnouncedLauncher LauncherOf(const Publication& publication);
void Announce(Publication& publication, const AnnouncedLauncher& launcher);

/// Reads a published manifest; nothing if there is no such file. Raises PublishError if it cannot be read or
/// is no manifest.
std::optional<Publication> ReadPublication(const std::filesystem::path& file);

/// The same of a text that comes from `source`, a file or an address.
Publication ParsePublication(std::string text, const std::string& source);

/// ReadPublication without the files and archives, which costs a fraction.
std::optional<DocumentHead> ReadHead(const std::filesystem::path& file);

/// The JSON value of a publication, without blanks: each player reads it at every start. The same publication
/// gives the same bytes.
std::string JsonText(const Publication& publication);

/// That value and a line feed. Raises PublishError if launchers would not accept it.
std::string ManifestText(const Publication& publication);

}  // namespace patcher::publisher
