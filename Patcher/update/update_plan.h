#pragma once

#include <cstddef>

#include "update/run_state.h"

namespace patcher {

/// Sorts each file of the manifest into trusted, found good or wanted: fills the expected digests and sizes,
/// `wanted` and `wantedBytes`, and enters what was found good in the record. Returns the number found good.
std::size_t FindWantedFiles(UpdateRun& run);

/// Fills `wantedPaths`, `chosenBundles` and `bundleBytes`. True if the archives together weigh less than the
/// wanted files together.
bool ChooseBundles(UpdateRun& run);

/// Takes the wanted files out of the record, true if it held one: from here on their content on disk is
/// uncertain, and a server that goes back to the recorded version must not find them vouched for.
bool ForgetWantedFiles(UpdateRun& run);

/// Fills `archivePaths` from the chosen archives.
void AssignArchivePaths(UpdateRun& run);

/// Fills `singles` and `singleBytes`: the wanted files that do not come through archives. Of a
/// path that stands twice in the manifest the last entry counts.
void ListSingles(UpdateRun& run);

}  // namespace patcher
