#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "file_hasher.h"
#include "progress_line.h"

namespace patcher::publisher {

/// Does one item of work. The hasher belongs to the calling worker.
using CoreWork = std::function<void(std::size_t index, FileHasher& hasher)>;

/// Does all items of a stage, for example "hashing", on as many threads as the machine has cores, waits for
/// them, and shows the progress. `sizes` has the number of bytes that each item counts. Large items start
/// first, so that no large item runs alone at the end; small ones start in the given order. When an item
/// raises an exception, no further item starts, and the exception is raised here.
void RunOnAllCores(const std::string& stage, const std::vector<std::uint64_t>& sizes, Progress& progress,
                   const CoreWork& work);

}  // namespace patcher::publisher
