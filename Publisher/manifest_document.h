#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "update/patch_manifest.h"

namespace patcher::publisher {

/// An archive of the manifest, and the version in which its files were new or changed. The launcher does not
/// read that number.
struct PublishedArchive {
  PatchBundle bundle;
  std::int32_t since = 0;
};

/// The launcher that a manifest announces.
struct AnnouncedLauncher {
  std::int32_t build = 0;
  std::string name;    ///< name below "/patch/"; empty: no launcher is announced
  std::string sha256;  ///< empty in manifests of earlier releases
};

/// The values of a manifest besides its files and archives.
struct DocumentHead {
  std::int32_t version = 0;
  /// Increases with every document that is published or goes live, to order them by time. 0 in manifests of
  /// earlier releases.
  std::uint64_t sequence = 0;
  bool held = false;  ///< published, but never live so far
  AnnouncedLauncher launcher;
};

/// A manifest that was or will be published. The archives are in `archives`, not in `manifest.bundles`.
struct Publication {
  PatchManifest manifest;
  std::vector<PublishedArchive> archives;
  std::uint64_t sequence = 0;  ///< as in DocumentHead
  bool held = false;           ///< as in DocumentHead
  std::string text;            ///< the document, including any text after the JSON value
};

[[nodiscard]] AnnouncedLauncher LauncherOf(const Publication& publication);
void Announce(Publication& publication, const AnnouncedLauncher& launcher);

/// Reads a published manifest; nothing if there is no such file. Raises PublishError if it cannot be read or
/// is not a manifest.
[[nodiscard]] std::optional<Publication> ReadPublication(const std::filesystem::path& file);

/// The same for a text. `source` is its file or address, for messages.
[[nodiscard]] Publication ParsePublication(std::string text, const std::string& source);

/// Like ReadPublication, but without files and archives, which is much faster.
[[nodiscard]] std::optional<DocumentHead> ReadHead(const std::filesystem::path& file);

/// The JSON value of a publication. Has no white space, since each player downloads it at every start. The
/// same publication gives the same bytes.
[[nodiscard]] std::string JsonText(const Publication& publication);

/// The JSON value and a line feed. Raises PublishError if launchers would not accept it.
[[nodiscard]] std::string ManifestText(const Publication& publication);

}  // namespace patcher::publisher
