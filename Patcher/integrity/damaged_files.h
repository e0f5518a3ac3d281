#pragma once

#include <string>
#include <vector>

namespace patcher {

/// Makes the next update run fetch these manifest paths: each file is deleted where that is safe, and all of
/// them leave the local manifest, whose other entries and version stay. Raises nothing for a file that cannot
/// be deleted: without its entry the run proves it by its digest.
///
/// Not deleted: what a path names outside the install directory or behind a link, what a directory holds (an
/// empty directory goes), and the running launcher.
void DiscardDamagedFiles(const std::vector<std::string>& paths);

}  // namespace patcher
