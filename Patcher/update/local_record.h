#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "update/local_manifest.h"

namespace patcher {

/// A text and its parsed form, for a caller that has both: after a complete run the record is
/// the server's document.
struct ParsedDocument {
  std::string_view text;
  const PatchManifest* manifest = nullptr;
};

/// The record (patch_manifest.json) of one operation, in memory and on disk. A file may be entered only when
/// its content and its directory entry are on the disk (UnflushedFiles). A death or a power cut during a save
/// leaves the record of the save before, the new one, or a text that does not parse, which counts as no
/// record; never a mixture. Not thread-safe: callers hold a lock of their own.
class LocalRecord {
 public:
  explicit LocalRecord(std::filesystem::path path);
  LocalRecord(const LocalRecord&) = delete;
  LocalRecord& operator=(const LocalRecord&) = delete;

  /// Replaces the state by what the file says; empty, with version 0, if it says nothing. A file that holds
  /// just the parsed text is not parsed again; its manifest must then outlive the record, unchanged.
  void Load(const ParsedDocument& parsed = {});

  /// Whether the state is still what the parsed document says. Until then it takes no memory of its own.
  bool IsDocument() const { return document_ != nullptr; }

  std::int32_t Version() const { return version_; }

  /// Whether Load has been called.
  bool IsLoaded() const { return loaded_; }

  /// The sequence of the signed document that the last complete run has stored. Always 0 without
  /// LauncherKeys, and if there was no such run. It outlives the document: see Save.
  std::uint64_t Sequence() const { return sequence_; }
  const LocalState& State();

  /// Whether there is a file of which nothing could be read, because another program holds it for example.
  bool IsUnread() const;
  void Enter(const std::string& path, const std::string& digest);
  void Forget(std::string_view path);

  /// Replaces the file by the whole state (RecordText). A file that cannot be replaced is removed, since it
  /// may name what is no longer installed. False if that failed too: the old file is still there. Before a
  /// signed document is given up, its sequence goes to a file of its own (kSequenceFile): the form of the
  /// record has no place for it, and a server must not get rid of it by failing in the middle of an update.
  [[nodiscard]] bool Save();

  /// As Save, for the many saves of one run: entries after the last saved path are appended, so that a save
  /// costs what is new; entries before it wait until there are enough of them to write everything.
  /// Nothing that the file then says is wrong, but it may lag.
  void SaveProgress();

  /// Replaces the file by the server's document, byte for byte; as Save for what cannot be replaced.
  [[nodiscard]] bool SaveDocument(std::string_view document);

 private:
  [[nodiscard]] bool Replace(std::string_view text) const;
  std::filesystem::path SequenceFile() const;
  void KeepSequence();
  /// False if everything has to be written instead.
  bool SaveTail();
  /// `paths` are sorted and come after the last saved one.
  bool Append(const std::vector<std::string>& paths);

  std::filesystem::path path_;
  bool loaded_ = false;
  std::int32_t version_ = 0;
  std::uint64_t sequence_ = 0;
  std::uint64_t keptSequence_ = 0;           // in the sequence file; 0: there is none
  const PatchManifest* document_ = nullptr;  // what the state is, as long as `state_` is not filled
  LocalState state_;
  std::uint64_t savedSize_ =
      0;                  // bytes of the progress form as last saved; 0: the next save writes everything
  std::string lastPath_;  // of that text
  std::vector<std::string> changed_;  // new paths since then
};

}  // namespace patcher
