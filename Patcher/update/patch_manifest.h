#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace patcher {

/// One file of an installation.
struct PatchFile {
  std::string path;        ///< UTF-8, forward slashes, relative to the install directory: the file's identity
  std::uint64_t size = 0;  ///< bytes
  std::string sha256;      ///< 64 lower-case hexadecimal digits
  std::string url;         ///< name below "/patch/"
};

/// A ZIP archive of many files. "Bundle" is the manifest's word; elsewhere it is called an archive.
struct PatchBundle {
  std::string name;                ///< name below "/patch/"
  std::uint64_t size = 0;          ///< bytes of the archive
  std::string sha256;              ///< digest of the archive
  std::vector<std::string> files;  ///< paths as in PatchFile and in the ZIP's directory
};

/// The server's document, which describes a complete installation.
struct PatchManifest {
  std::int32_t version = 0;         ///< only shown and stored
  std::uint64_t sequence = 0;       ///< orders signed documents by time (SequenceFault)
  std::int32_t patcherVersion = 0;  ///< build number of the newest launcher
  std::string patcherUrl;           ///< the launcher's name below "/patch/"
  /// The digest of the launcher; empty if none was announced. A value that is not a text becomes a digest
  /// that no file has, so that a publisher's mistake does not allow any launcher.
  std::string patcherSha256;
  std::vector<PatchFile> files;      ///< in document order, complete
  std::vector<PatchBundle> bundles;  ///< in document order, except those without a name or digest
  std::size_t valueSize = 0;         ///< bytes from the start of the text to the end of the JSON value
};

/// Bytes of the longest document. Its text and its parsed form are in memory, for a moment together with
/// those of the previous version, and the process should use less than 512 MB. A manifest of 200,000 files
/// with paths and URLs of 80 bytes, each also listed by an archive, has 82 MB.
inline constexpr std::size_t kMaxManifestSize = std::size_t{96} << 20;

/// Bytes of the longest path, name, URL or digest. No system allows longer paths, and the engine copies these
/// texts.
inline constexpr std::size_t kMaxManifestText = 32767;

/// Reads a manifest leniently: a value that is missing or of another kind keeps its default. Truncates
/// numbers toward zero, and changes a number that does not fit its field to the nearest one that does.
/// Returns false only if the text does not parse or exceeds a limit (the two above, or MiniJson::kMaxValues),
/// with the reason in `error`.
[[nodiscard]] bool ParsePatchManifest(std::string_view text, PatchManifest& manifest, std::string& error);

}  // namespace patcher
