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

/// A ZIP archive that holds many files. "Bundle" is the manifest's word for it; elsewhere the launcher says
/// archive.
struct PatchBundle {
  std::string name;                ///< name below "/patch/"
  std::uint64_t size = 0;          ///< bytes of the archive
  std::string sha256;              ///< digest of the archive
  std::vector<std::string> files;  ///< paths, each spelled as in PatchFile and in the ZIP's directory
};

/// The server's document: what a complete installation is.
struct PatchManifest {
  std::int32_t version = 0;         ///< shown and stored; decides nothing
  std::uint64_t sequence = 0;       ///< orders signed documents in time (ServerManifest)
  std::int32_t patcherVersion = 0;  ///< build number of the newest launcher
  std::string patcherUrl;           ///< its name below "/patch/"
  /// The digest that its bytes must have; empty: none was announced. A value that is no text reads as a
  /// digest that no file has: a publisher's mistake must not permit any launcher at all.
  std::string patcherSha256;
  std::vector<PatchFile> files;      ///< document order, nothing removed
  std::vector<PatchBundle> bundles;  ///< document order, without those that lack a name or a digest
  std::size_t valueSize = 0;         ///< bytes of the text up to the end of the JSON value
};

/// Bytes of the longest document. It is held in memory as text and parsed, for a moment beside the previous
/// version of both, and the whole process is to stay below 512 MB. 200,000 files whose paths and URLs have 80
/// bytes, each also listed by an archive, have 82 MB.
inline constexpr std::size_t kMaxManifestSize = std::size_t{96} << 20;

/// Bytes of the longest path, name, URL or digest: no system knows longer ones, and the engine copies them.
inline constexpr std::size_t kMaxManifestText = 32767;

/// Reads a manifest leniently: what is absent or of another kind stays at its default. Numbers are truncated
/// toward zero; one that does not fit its field becomes the nearest that does. False only if the text does
/// not parse or is above one of the limits (MiniJson::kMaxValues is the third), with the reason in `error`.
[[nodiscard]] bool ParsePatchManifest(std::string_view text, PatchManifest& manifest, std::string& error);

}  // namespace patcher
