#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "update/local_manifest.h"

namespace patcher {

/// A text and its parsed form, for callers that have both. After a complete run the record is the server's
/// document.
struct ParsedDocument {
  std::string_view text;
  const PatchManifest* manifest = nullptr;
};

/// The record (patch_manifest.json) of one operation, in memory and on disk. Enter a file only after its
/// content and its directory entry are on the disk (UnflushedFiles). A crash or a power cut during a save
/// leaves the previous record, the new record, or a text that does not parse and counts as no record, but
/// never a mixture. Not thread-safe: callers use their own lock.
class LocalRecord {
 public:
  explicit LocalRecord(std::filesystem::path path);
  LocalRecord(const LocalRecord&) = delete;
  LocalRecord& operator=(const LocalRecord&) = delete;

  /// Replaces the state by that of the file. Without a readable file the state is empty, with version 0. If
  /// the file is equal to the parsed text, it is not parsed again; then the manifest must outlive the record
  /// and must not change.
  void Load(const ParsedDocument& parsed = {});

  /// Whether the state is still that of the parsed document. While it is, the record needs no memory for it.
  bool IsDocument() const { return document_ != nullptr; }

  std::int32_t Version() const { return version_; }

  /// Whether Load has been called.
  bool IsLoaded() const { return loaded_; }

  /// The sequence of the signed document that the last complete run stored. 0 without LauncherKeys, and
  /// before the first such run. It is kept when the document is replaced: see Save.
  std::uint64_t Sequence() const { return sequence_; }
  const LocalState& State();

  /// Whether Load has found a file but could read nothing from it, for example because another program holds
  /// it. That file may name any files.
  bool WasUnreadable() const { return wasUnreadable_; }
  void Enter(const std::string& path, const std::string& digest);
  void Forget(std::string_view path);

  /// Replaces the file by the full state (RecordText). If that fails, the old file stays: it must not name a
  /// file that has changed since, so call SaveOrRemove before files change. Before a signed document is
  /// replaced, its sequence is written to another file (kSequenceFile), since the progress form has no place
  /// for it. Otherwise a server could reset the sequence by failing in the middle of an update. Returns false
  /// after a failure, which costs the next run more time and nothing else.
  bool Save();

  /// As Save, but removes the old file if it cannot be replaced. Returns false if removing it fails too, so
  /// it still exists: then no file that it names may change.
  [[nodiscard]] bool SaveOrRemove();

  /// As Save, but cheaper, for the many saves of one run. Appends new entries whose paths sort after the last
  /// saved path. Entries before it wait until there are enough of them for a full save. The file may lack
  /// entries, but none of its entries is wrong.
  void SaveProgress();

  /// Replaces the file by the server's document, byte for byte. If that fails, the old file stays, as in
  /// Save.
  bool SaveDocument(std::string_view document);

 private:
  [[nodiscard]] bool Replace(std::string_view text);
  std::filesystem::path SequenceFile() const;
  void SaveSequence();
  /// False if the full state has to be saved instead.
  bool SaveTail();
  /// `paths` are sorted and come after the last saved one.
  bool Append(const std::vector<std::string>& paths);

  std::filesystem::path path_;
  bool loaded_ = false;
  bool wasUnreadable_ = false;
  std::int32_t version_ = 0;
  std::uint64_t sequence_ = 0;
  std::uint64_t fileSequence_ = 0;           // number in the sequence file; 0: no file
  const PatchManifest* document_ = nullptr;  // if not null, this is the state and `state_` is empty
  LocalState state_;
  bool replaceFailed_ = false;        // the last time; then it is tried only once the next time
  std::uint64_t savedSize_ = 0;       // bytes of the saved progress form; 0: the next save is a full one
  std::string lastPath_;              // last path of the saved text
  std::vector<std::string> changed_;  // paths added since that save
};

}  // namespace patcher
