#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace patcher {

/// The folder that a web server serves as "/patch/". Contents have names made of their digests and never
/// change; the manifest is the only file that is ever replaced. New files are written to a work folder inside
/// it and moved into place when they are whole and on the disk.
class ContentStore {
 public:
  /// `www` is the web server's root.
  explicit ContentStore(const std::filesystem::path& www);

  const std::filesystem::path& Root() const { return root_; }
  std::filesystem::path ManifestFile() const { return root_ / "version.json"; }
  std::filesystem::path HistoryFolder() const { return root_ / "history"; }

  /// Names below "/patch/", as the manifest gives them.
  static std::string FileName(const std::string& digest);
  /// `since` is the version that brought the content. Players read this name in their journal: it is kept
  /// short.
  static std::string ArchiveName(std::int32_t since, const std::string& digest);
  static std::string LauncherName(const std::string& digest);

  /// Where a name of the manifest lies.
  std::filesystem::path Place(std::string_view name) const;
  /// Whether something of that name and size is there.
  bool Has(std::string_view name, std::uint64_t size) const;

  /// Makes the folders, and an empty work folder in place of what an interrupted run may have left. Raises
  /// PublishError.
  void OpenForWriting();
  /// A place for an unfinished file. `key` is unique among the files unfinished at the same time.
  std::filesystem::path WorkFile(std::string_view key) const;
  /// Moves a finished, flushed work file to a name's place. Raises PublishError.
  void PutInPlace(const std::filesystem::path& workFile, const std::filesystem::path& place) const;
  /// Writes a small document and puts it in place in one step, on the disk itself. Raises PublishError.
  void WriteDocument(const std::filesystem::path& place, std::string_view text) const;
  /// Brings the names that were put in place to the disk, so that a manifest never survives a power cut that
  /// its contents do not survive. Without effect where the system flushes no folders.
  void FlushNames() const;
  void RemoveWorkFolder() const noexcept;

 private:
  std::filesystem::path root_;
};

}  // namespace patcher
