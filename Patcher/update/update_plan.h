#pragma once

#include <cstddef>

#include "update/run_state.h"

namespace patcher {

/// Decides for each file of the manifest whether it is trusted (in the record), correct (by its digest) or
/// wanted. Fills `wanted`, `wantedBytes` and the expected digests and sizes. Flushes the correct files and
/// enters them in the record. Returns their number.
std::size_t FindWantedFiles(RunState& run);

/// Fills `wantedPaths`, `chosenBundles` and `bundleBytes`. True if the archives together have fewer bytes
/// than the wanted files together.
bool ChooseRunArchives(RunState& run);

/// Removes from the record every file that the installation of the wanted files may change, and saves the
/// entries of the wanted files in `forgotten`. True if it removed any. From now on the content of these files
/// on disk is uncertain: after a crash, a server that goes back to the recorded version must not find them in
/// the record.
[[nodiscard]] bool ForgetWantedFiles(RunState& run);

/// Called when a stage has failed. Restores the record's entries for the forgotten files that have not
/// changed since.
void RememberUntouchedFiles(RunState& run);

/// Fills `archivePaths` from the chosen archives, and removes the files that they may write from `forgotten`.
void AssignArchivePaths(RunState& run);

/// Fills `singles` and `singleBytes` with the wanted files that do not come from archives. If the manifest
/// lists a path twice, the last entry counts.
void ListSingles(RunState& run);

}  // namespace patcher
