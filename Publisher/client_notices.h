#pragma once

#include "client_scan.h"
#include "exclusions.h"
#include "progress_line.h"

namespace patcher::publisher {

/// Prints notices about a client: entries that are not published, patterns that match nothing, names that may
/// fail on a player's machine. Raises PublishError if there is no file to publish or a file must not be
/// published.
void PrintNotices(const ClientScan& scan, const Exclusions& exclusions, Progress& progress);

}  // namespace patcher::publisher
