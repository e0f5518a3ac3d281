#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "file_hasher.h"
#include "progress_line.h"

namespace patcher::publisher {

/// One item of work. The hasher belongs to the calling worker.
using CoreWork = std::function<void(std::size_t index, FileHasher& hasher)>;

/// Does all items of a stage, for example "hashing", on as many threads as the machine has cores, waits for
/// them, and shows the progress. `sizes` has the bytes that each item counts: large items begin first, so
/// that none of them is left alone at the end; small ones begin in the given order. After an item that raises
/// no new one is begun, and its exception is raised here.
void RunOnAllCores(const std::string& stage, const std::vector<std::uint64_t>& sizes, Progress& progress,
                   const CoreWork& work);

}  // namespace patcher::publisher
