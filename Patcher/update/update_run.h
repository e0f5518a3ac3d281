#pragma once

#include <chrono>
#include <cstddef>
#include <functional>

#include "control/protocol/host_window.h"
#include "update/progress_tracker.h"
#include "update/run_state.h"

namespace patcher {

/// What the run asks of layers above it. Every entry is filled.
struct UpdateStages {
  /// Fetches the newer launcher that the manifest announces. True if the run is to end in favour of the swap;
  /// false if the fetch was not needed or failed.
  std::function<bool(RunState&)> selfUpdate;
  /// Work item of the archive stage: installs chosenBundles[index] as the worker of that number.
  std::function<bool(RunState&, ProgressTracker&, std::size_t index, unsigned worker)> installArchive;
  /// Removes what no longer belongs, after a run that fetched everything.
  std::function<void(HostWindow&, const PatchManifest&)> cleanUp;
  /// Whether the game can be started if the run cannot complete.
  std::function<bool()> clientExists;
  /// How long an operation waits for another launcher in the same directory.
  std::chrono::milliseconds lockPatience = std::chrono::seconds(30);
};

/// Brings the installation to the state that the server's manifest describes and reports every step to the
/// page. Runs on a worker thread under the operation guard; waits while another launcher works in the same
/// directory, and ends without having touched anything if that takes too long. Raises nothing; ends with one
/// `ready`, posted when everything else of the run is over, unless the launcher is being replaced.
void RunUpdate(HostWindow& window, const UpdateStages& stages);

}  // namespace patcher
