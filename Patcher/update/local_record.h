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
/// A save costs what changed since the save before: the file is rewritten in place from the first changed
/// entry on, which for a run that installs files in path order is nearly an append. The bytes are always
/// those of SaveLocalManifest. A death in the middle of such a write leaves a text that does not parse, which
/// counts as no record, or one in which a path stands with the digest of another, which matches nothing and
/// costs one hash.
class LocalRecord {
 public:
  explicit LocalRecord(std::filesystem::path path);

  /// Replaces the state by what the file says; empty, with version 0, if it says nothing.
  void Load();

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
    const std::string* path;  // key in `state_`
    std::uint64_t offset;     // of its text in the file
  };

  void NoteChange(const std::string& path);
  bool SaveTail();
  void SaveWhole();

  std::filesystem::path path_;
  std::int32_t version_ = 0;
  LocalState state_;
  std::vector<SavedEntry>
      saved_;  // layout of the last save, path order; empty: the next save writes everything
  std::uint64_t savedSize_ = 0;
  bool changed_ = false;
  std::string firstChange_;  // lowest path entered since the last save
};

}  // namespace patcher
