#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "update/local_manifest.h"

namespace patcher {

/// The local manifest of one operation, in memory and on disk. Not thread-safe: callers hold a lock of their
/// own.
///
/// A save costs little more than what changed since the save before: the text of the last save is kept, what
/// is new is merged into it, and the file is rewritten in place from the first changed entry on, which for a
/// run that installs files in path order is nearly an append. The bytes are always those of
/// SaveLocalManifest. A death in the middle of such a write leaves a text that does not parse, which
/// counts as no record, or one in which a path stands with the digest of another, which costs one hash.
class LocalRecord {
 public:
  explicit LocalRecord(std::filesystem::path path);

  /// Replaces the state by what the file says; empty, with version 0, if it says nothing.
  void Load(const ParsedDocument& parsed = {});

  const std::filesystem::path& Path() const { return path_; }
  std::int32_t Version() const { return version_; }
  const LocalState& State() const { return state_; }

  bool Has(std::string_view path, std::string_view digest) const;
  void Enter(const std::string& path, const std::string& digest);
  /// True if there was an entry.
  bool Forget(std::string_view path);

  /// Brings the file up to date. Failures are not reported; the save after one writes everything.
  void Save();

 private:
  struct SavedEntry {
    LocalState::const_iterator entry;
    std::size_t begin;  // of its text in `text_`
  };

  /// False if the file is not the one last saved, or could not be written.
  bool SaveTail();
  void SaveWhole();
  bool WriteFrom(std::size_t begin);
  void AppendEntry(LocalState::const_iterator entry);
  /// Appends the old entries with the changes among them to `text_`. The old text began at `oldBegin`.
  void MergeChanges(std::string_view oldText, const std::vector<SavedEntry>& oldEntries,
                    std::size_t oldBegin);
  /// Forgets the last save.
  void Restart();

  std::filesystem::path path_;
  std::int32_t version_ = 0;
  LocalState state_;
  std::string text_;               // as last saved
  std::vector<SavedEntry> saved_;  // its layout in path order; empty: the next save writes everything
  std::vector<LocalState::const_iterator> changes_;  // entered since the last save, in that order
};

}  // namespace patcher
