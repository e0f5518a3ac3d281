#pragma once

#include "client_scan.h"
#include "exclusions.h"
#include "progress_line.h"

namespace patcher::publisher {

/// Gives the notices about a client: what stays out, patterns that match nothing, names that may fail on a
/// player's machine. Raises PublishError if nothing can be published or something must not be.
void GiveNotices(const ClientScan& scan, const Exclusions& exclusions, Progress& progress);

}  // namespace patcher::publisher
