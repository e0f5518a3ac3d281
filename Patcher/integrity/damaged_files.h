#pragma once

#include "control/protocol/page_messages.h"

namespace patcher {

/// Makes the next update run fetch the listed files: all of them leave the record, whose other
/// entries and version stay, and then each is deleted where that is safe. False, and nothing is deleted, if
/// the record could be neither saved nor removed. Raises nothing for a file that cannot be deleted:
/// without its entry the run proves it by its digest.
///
/// Not deleted: a file that could not be examined, what a path names outside the install directory or through
/// a link, what a directory holds (an empty one is deleted), and the running launcher.
[[nodiscard]] bool DiscardDamagedFiles(const CheckResult& result);

}  // namespace patcher
