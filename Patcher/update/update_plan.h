#pragma once

#include <cstddef>

#include "update/run_state.h"

namespace patcher {

/// Sorts each file of the manifest into trusted, found good or wanted: fills the expected digests and sizes,
/// `wanted` and `wantedBytes`, flushes what was found good and enters it in the record. Returns the number of
/// files found good.
std::size_t FindWantedFiles(RunState& run);

/// Fills `wantedPaths`, `chosenBundles` and `bundleBytes`. True if the archives together weigh less than the
/// wanted files together.
bool ChooseBundles(RunState& run);

/// Takes what the installation of the wanted files may change out of the record, and the wanted files
/// themselves into `forgotten`; true if the record held any. From here on their content on disk is uncertain,
/// and after a death a server that goes back to the recorded version must not find them in the record.
[[nodiscard]] bool ForgetWantedFiles(RunState& run);

/// When a stage has failed: the files that were forgotten and have not been touched since are in the record
/// as before.
void RememberUntouchedFiles(RunState& run);

/// Fills `archivePaths` from the chosen archives. What they may write is no longer to be remembered.
void AssignArchivePaths(RunState& run);

/// Fills `singles` and `singleBytes`: the wanted files that do not come through archives. Of a
/// path that the manifest lists twice the last entry counts.
void ListSingles(RunState& run);

}  // namespace patcher
