#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "control/protocol/host_window.h"
#include "platform/mutex.h"
#include "transport/http_session.h"
#include "update/archive_extraction.h"
#include "update/local_record.h"
#include "update/patch_manifest.h"
#include "update/unflushed_files.h"

namespace patcher {

/// What changes when a file is written or replaced.
struct FileStamp {
  std::filesystem::file_time_type written;
  std::uint64_t size = 0;
  bool operator==(const FileStamp&) const = default;
};

/// A wanted file as the record had it before the run.
struct ForgottenFile {
  std::string path;
  std::string digest;
  std::optional<FileStamp> stamp;  ///< nothing if it could not be read: the file is not remembered
};

/// State of one update run. The lists point into `manifest`, which does not change once it is parsed. While a
/// pool runs, workers read everything that `stateLock` does not guard. That lock is never held together with
/// a ProgressTracker's lock.
struct RunState {
  explicit RunState(HostWindow& hostWindow);

  platform::Mutex stateLock;
  HostWindow& window;
  HttpSession session;
  std::string manifestText;  ///< the server's document as received; becomes the record at the end
  PatchManifest manifest;
  /// What is known to be installed, and is on the disk.
  LocalRecord record PATCHER_GUARDED_BY(stateLock);
  UnflushedFiles unflushed;  ///< what is to enter the record

  // By path, once something is wanted; the text is the manifest's own.
  std::map<std::string_view, std::string_view> expectedDigests;
  std::map<std::string_view, std::uint64_t> expectedSizes;
  std::vector<const PatchFile*> wanted;  ///< manifest order
  std::uint64_t wantedBytes = 0;
  std::set<std::string, std::less<>> wantedPaths;
  std::vector<ForgottenFile> forgotten;           ///< to be remembered if they stay untouched
  std::vector<const PatchBundle*> chosenBundles;  ///< manifest order
  std::uint64_t bundleBytes = 0;
  /// Wanted files that are to arrive through archives, each with the index of the first chosen archive that
  /// lists it: that one alone extracts the file, so that two workers never write the same one.
  std::map<std::string, std::size_t, std::less<>> archivePaths;
  ExtractingThreads extracting;  ///< of the archive stage: as many as connections
  /// Wanted files of archives that failed.
  std::set<std::string, std::less<>> retryPaths PATCHER_GUARDED_BY(stateLock);
  /// A file that an archive should have brought is not there, or has another size.
  bool lacksFiles PATCHER_GUARDED_BY(stateLock) = false;
  std::vector<const PatchFile*> singles;  ///< manifest order
  std::uint64_t singleBytes = 0;
};

/// Enters files that have come out of `unflushed`. Any thread, without `stateLock`.
void EnterInRecord(RunState& run, const std::vector<InstalledFile>& files);

}  // namespace patcher
