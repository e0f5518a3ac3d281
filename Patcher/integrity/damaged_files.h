#pragma once

#include "control/protocol/page_messages.h"

namespace patcher {

/// Makes the next update run download the listed files. Removes all of them from the record, keeps its other
/// entries and its version, and then deletes each file where that is safe. Returns false without deleting a
/// file if the record could be neither saved nor removed. Raises nothing for a file that cannot be deleted:
/// since the record does not name it any more, the run checks its digest.
///
/// Does not delete a file that could not be examined, anything outside the install directory or below a link,
/// a directory that is not empty, or the running launcher.
[[nodiscard]] bool DiscardDamagedFiles(const CheckResult& result);

}  // namespace patcher
