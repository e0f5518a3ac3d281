#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace patcher::publisher {

/// The folder that a web server serves as "/patch/". The names of contents are made from their digests, and
/// contents never change; only the manifest is ever replaced. New files are written to a work folder inside
/// it, and moved into place when they are complete and on the disk. Files in place are always readable for a
/// web server, independent of the umask. All members that change files raise PublishError.
class ContentStore {
 public:
  /// `www` is the web server's root.
  explicit ContentStore(const std::filesystem::path& www);

  [[nodiscard]] const std::filesystem::path& Root() const { return root_; }
  [[nodiscard]] std::filesystem::path ManifestFile() const { return root_ / "version.json"; }
  [[nodiscard]] std::filesystem::path HistoryFolder() const { return root_ / "history"; }

  /// The folders below the root that hold contents. "files" is from earlier releases.
  static constexpr std::array<const char*, 4> kContentFolders{"f", "files", "archives", "launcher"};

  /// These functions return names below "/patch/", as in the manifest. This one uses the first 16 digits of
  /// the digest. Among a million contents, the chance that two have the same is one in 37 million, and
  /// ContentNames detects it.
  [[nodiscard]] static std::string FileName(const std::string& digest);
  /// The name of a content if FileName belongs to another content.
  [[nodiscard]] static std::string LongFileName(const std::string& digest);
  /// The name of the content in earlier releases.
  [[nodiscard]] static std::string OldFileName(const std::string& digest);
  /// `since` is the version in which the content was new. The name is short, since players see it in the
  /// journal.
  [[nodiscard]] static std::string ArchiveName(std::int32_t since, const std::string& digest);
  [[nodiscard]] static std::string LauncherName(const std::string& digest);

  /// The file of a name in the manifest.
  [[nodiscard]] std::filesystem::path Place(std::string_view name) const;
  /// Whether a file of that name and size exists.
  [[nodiscard]] bool Has(std::string_view name, std::uint64_t size) const;
  /// Makes a content readable for a web server. An earlier run may have written it with a stricter umask.
  void MakeReadable(std::string_view name) const;

  /// Makes only the root folder.
  void MakeRoot() const;
  /// Makes the folders and an empty work folder for this object. Removes the leftovers of interrupted runs.
  void OpenForWriting() const;
  /// The place for an unfinished file. `key` must be unique among the files that are unfinished at the same
  /// time.
  [[nodiscard]] std::filesystem::path WorkFile(std::string_view key) const;
  /// Flushes a finished work file to disk and moves it to `place` in one step.
  void PutInPlace(const std::filesystem::path& workFile, const std::filesystem::path& place) const;
  /// Writes a document to the work folder and puts it in place.
  void WriteDocument(const std::filesystem::path& place, std::string_view text) const;
  /// Flushes the entries of a folder to disk. No effect on file systems that cannot do that.
  void FlushFolder(const std::filesystem::path& folder) const;
  /// Flushes the entries of all content folders, so that a power cut cannot lose contents of a manifest that
  /// it keeps.
  void FlushNames() const;
  void RemoveWorkFolder() const noexcept;

 private:
  std::filesystem::path root_;
  std::filesystem::path work_;
};

}  // namespace patcher::publisher
