#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

#include "update/progress_tracker.h"
#include "update/update_run.h"

namespace patcher {

/// Extracts the wanted entries of a ZIP archive to their places below the install directory, in the archive's
/// order. Directories, nameless entries and names that could leave the install directory are passed over.
/// False if the archive cannot be read ("archive illisible") or an entry cannot be extracted (its name); a
/// file may then stand half-written in its place.
bool ExtractArchive(const std::filesystem::path& archive,
                    const std::function<bool(std::string_view path)>& wanted, std::string& failure);

/// Work item of the archive stage: downloads chosenBundles[index], extracts its wanted files and records
/// them. The files of an archive that fails go to `retryPaths`. Always true: a failed archive does not stop
/// the pool.
bool BundleWorker(UpdateRun& run, ProgressTracker& tracker, std::size_t index, unsigned worker);

}  // namespace patcher
