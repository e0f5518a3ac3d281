#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace patcher::publisher {

/// The folder that a web server serves as "/patch/". Contents have names made of their digests and never
/// change; the manifest is the only file that is ever replaced. New files are written to a work folder inside
/// it and moved into place when they are whole and on the disk. A web server can read whatever is put in
/// place, whatever mask of permissions the process has. All members that change something raise PublishError.
class ContentStore {
 public:
  /// `www` is the web server's root.
  explicit ContentStore(const std::filesystem::path& www);

  const std::filesystem::path& Root() const { return root_; }
  std::filesystem::path ManifestFile() const { return root_ / "version.json"; }
  std::filesystem::path HistoryFolder() const { return root_ / "history"; }

  /// Folders below the root that hold contents; "files" is the one of earlier releases.
  static constexpr std::array<const char*, 4> kContentFolders{"f", "files", "archives", "launcher"};

  /// Names below "/patch/", as the manifest gives them. The first 16 digits of the digest: among a million
  /// contents, the chance that two share them is one in 37 million, and ContentNames notices it.
  static std::string FileName(const std::string& digest);
  /// For a content whose name has another owner.
  static std::string LongFileName(const std::string& digest);
  /// What earlier releases called the content.
  static std::string OldFileName(const std::string& digest);
  /// `since` is the version that brought the content. Players read this name in their journal: it is kept
  /// short.
  static std::string ArchiveName(std::int32_t since, const std::string& digest);
  static std::string LauncherName(const std::string& digest);

  /// Where a name of the manifest lies.
  std::filesystem::path Place(std::string_view name) const;
  /// Whether something of that name and size is there.
  bool Has(std::string_view name, std::uint64_t size) const;
  /// Lets a web server read a content that an earlier run may have put there under a stricter mask.
  void MakeReadable(std::string_view name) const;

  /// Makes the root, without anything in it.
  void MakeRoot() const;
  /// Makes the folders, and an empty work folder that is this object's alone; removes what interrupted runs
  /// have left.
  void OpenForWriting() const;
  /// A place for an unfinished file. `key` is unique among the files unfinished at the same time.
  std::filesystem::path WorkFile(std::string_view key) const;
  /// Brings a finished work file to the disk and moves it to a name's place, in one step.
  void PutInPlace(const std::filesystem::path& workFile, const std::filesystem::path& place) const;
  /// Writes a small document and puts it in place.
  void WriteDocument(const std::filesystem::path& place, std::string_view text) const;
  /// Brings the entries of a folder to the disk. Without effect where the file system cannot do that.
  void FlushFolder(const std::filesystem::path& folder) const;
  /// The same for the names of all contents, so that a manifest never survives a power cut that its contents
  /// do not survive.
  void FlushNames() const;
  void RemoveWorkFolder() const noexcept;

 private:
  std::filesystem::path root_;
  std::filesystem::path work_;
};

}  // namespace patcher::publisher
