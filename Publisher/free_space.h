#pragma once

#include "client_scan.h"
#include "content_store.h"
#include "progress_line.h"

namespace patcher::publisher {

/// Compares the free space with the size of the new contents: files of a size that no stored content has.
/// Raises PublishError if they cannot fit, even if all files of one size are equal. Prints a notice if they
/// fit, but perhaps not together with their archives.
void RequireSpace(const ClientScan& scan, const ContentStore& store, Progress& progress);

}  // namespace patcher::publisher
