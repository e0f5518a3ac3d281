#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "control/host.h"
#include "transport/http_session.h"
#include "update/local_record.h"
#include "update/patch_manifest.h"
#include "update/progress_tracker.h"

namespace patcher {

/// State of one update run. The lists point into `manifest`, which does not change once it is parsed. While a pool
/// runs, workers read everything freely, but touch `record` and `retryPaths` only under `stateLock`, which is never
/// held together with a ProgressTracker's lock.
struct UpdateRun {
  explicit UpdateRun(HostWindow& hostWindow);

  HostWindow& window;
  HttpSession session;
  std::string manifestText;  ///< the server's document as received; becomes the local manifest at the end
  PatchManifest manifest;
  LocalRecord record;        ///< what is known to be installed

  std::map<std::string, std::string, std::less<>> expectedDigests;
  std::map<std::string, std::uint64_t, std::less<>> expectedSizes;
  std::vector<const PatchFile*> wanted;  ///< manifest order
  std::uint64_t wantedBytes = 0;
  std::set<std::string, std::less<>> wantedPaths;
  std::vector<const PatchBundle*> chosenBundles;  ///< manifest order
  std::uint64_t bundleBytes = 0;
  /// Wanted files that are to arrive through archives, each with the index of the first chosen archive that lists it:
  /// that one alone extracts the file, so that two workers never write the same one.
  std::map<std::string, std::size_t, std::less<>> archivePaths;
  std::set<std::string, std::less<>> retryPaths;  ///< wanted files of archives that failed
  std::vector<const PatchFile*> singles;  ///< manifest order
  std::uint64_t singleBytes = 0;

  std::mutex stateLock;
};

/// Stages that the run passes through if they are there.
struct UpdateStages {
  /// Fetches the newer launcher that the manifest announces. True if the run is to end in favour of the swap; false
  /// if the fetch was not needed or failed.
  std::function<bool(UpdateRun&)> selfUpdate;
  /// Work item of the archive stage: installs chosenBundles[index] as the worker of that number.
  std::function<bool(UpdateRun&, ProgressTracker&, std::size_t index, unsigned worker)> installBundle;
  /// Removes what no longer belongs, after a run that fetched everything.
  std::function<void(HostWindow&, const PatchManifest&)> cleanUp;
  /// Whether the game can be started if the run cannot complete.
  std::function<bool()> clientExists;
};

/// Brings the installation to the state that the server's manifest describes and tells the page every step. Runs on
/// a worker thread under the operation guard. Raises nothing; ends with one `ready`, posted when everything else of
/// the run is over, unless the launcher is being replaced.
void RunUpdate(HostWindow& window, const UpdateStages& stages);

}  // namespace patcher
