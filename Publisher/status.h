#pragma once

#include <cstddef>
#include <filesystem>

#include "report.h"

namespace patcher::publisher {

/// Reports the state of a web server's folder: the live version and the others, the launcher, the contents,
/// what players download, and what pruning with `keep` would delete. Reads only, and only documents and
/// sizes. `quiet`: print no notices. Raises PublishError if nothing was ever published there or the folder
/// cannot be read.
void ReportStatus(const std::filesystem::path& www, std::size_t keep, bool quiet, Report& report);

}  // namespace patcher::publisher
