#pragma once

#include <chrono>
#include <cstddef>
#include <functional>

#include "control/protocol/host_window.h"
#include "update/progress_tracker.h"
#include "update/run_state.h"

namespace patcher {

/// The functions of higher layers that the run calls. Every entry is filled.
struct UpdateStages {
  /// Downloads the newer launcher that the manifest announces. True if the run must end so that the launcher
  /// is replaced; false if the download was not needed or failed.
  std::function<bool(RunState&)> selfUpdate;
  /// Work item of the archive stage: installs chosenBundles[index]. `worker` is the number of the worker.
  std::function<bool(RunState&, ProgressTracker&, std::size_t index, unsigned worker)> installArchive;
  /// Removes obsolete files after a complete run.
  std::function<void(HostWindow&, const PatchManifest&)> cleanUp;
  /// Whether the game can be started if the run cannot complete.
  std::function<bool()> clientExists;
  /// How long an operation waits for another launcher that uses the same directory.
  std::chrono::milliseconds lockTimeout = std::chrono::seconds(30);
};

/// Brings the installation to the state that the server's manifest describes, and reports every step to the
/// page. Runs on a worker thread under the operation guard. Waits while another launcher uses the same
/// directory, and ends without any change if that takes too long. Raises nothing. Posts one `ready` after
/// everything else, unless the launcher is being replaced.
void RunUpdate(HostWindow& window, const UpdateStages& stages);

}  // namespace patcher
