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

/// The properties of a file that change when it is written or replaced.
struct FileStamp {
  std::filesystem::file_time_type written;
  std::uint64_t size = 0;
  bool operator==(const FileStamp&) const = default;
};

/// The record's entry for a wanted file before the run.
struct ForgottenFile {
  std::string path;
  std::string digest;
  std::optional<FileStamp> stamp;  ///< nothing if it could not be read: the entry is not restored
};

/// The state of one update run. The lists point into `manifest`, which does not change after it is parsed.
/// While a pool runs, workers only read the members that `stateLock` does not guard. Never hold that lock
/// together with a ProgressTracker's lock.
struct RunState {
  explicit RunState(HostWindow& hostWindow);

  platform::Mutex stateLock;
  HostWindow& window;
  HttpSession session;
  std::string manifestText;  ///< the server's document as received; becomes the record at the end
  PatchManifest manifest;
  /// The files that are installed and on the disk.
  LocalRecord record PATCHER_GUARDED_BY(stateLock);
  UnflushedFiles unflushed;  ///< installed files that are not in the record yet

  // By path; filled if a file is wanted. The texts belong to the manifest.
  std::map<std::string_view, std::string_view> expectedDigests;
  std::map<std::string_view, std::uint64_t> expectedSizes;
  std::vector<const PatchFile*> wanted;  ///< manifest order
  std::uint64_t wantedBytes = 0;
  std::set<std::string, std::less<>> wantedPaths;
  std::vector<ForgottenFile> forgotten;           ///< restored in the record if they stay unchanged
  std::vector<const PatchBundle*> chosenBundles;  ///< manifest order
  std::uint64_t bundleBytes = 0;
  /// Wanted files that come from archives, each with the index of the first chosen archive that lists it.
  /// Only that archive extracts the file, so two workers never write the same file.
  std::map<std::string, std::size_t, std::less<>> archivePaths;
  ExtractingThreads extracting;  ///< threads of the archive stage; at most as many as connections
  /// Wanted files of archives that failed.
  std::set<std::string, std::less<>> retryPaths PATCHER_GUARDED_BY(stateLock);
  /// A file that an archive should have installed is missing or has another size.
  bool lacksFiles PATCHER_GUARDED_BY(stateLock) = false;
  std::vector<const PatchFile*> singles;  ///< manifest order
  std::uint64_t singleBytes = 0;
};

/// Enters files that `unflushed` has returned in the record. Any thread, which must not hold `stateLock`.
void EnterInRecord(RunState& run, const std::vector<InstalledFile>& files);

}  // namespace patcher
