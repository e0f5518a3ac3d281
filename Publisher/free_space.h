#pragma once

#include "client_scan.h"
#include "content_store.h"
#include "progress_line.h"

namespace patcher::publisher {

/// Compares the free space with the files whose contents cannot be in the store, since it has none of their
/// size. Raises PublishError if these do not fit. A notice if they do, but perhaps not with their archives.
void RequireSpace(const ClientScan& scan, const ContentStore& store, Progress& progress);

}  // namespace patcher::publisher
