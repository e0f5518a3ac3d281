#pragma once

#include <cstddef>
#include <functional>
#include <vector>

#include "file_hasher.h"
#include "progress_line.h"

namespace patcher::publisher {

/// One item of work. The hasher belongs to the calling worker.
using CoreWork = std::function<void(std::size_t index, FileHasher& hasher)>;

/// Does all items, in order of their beginning, on as many threads as the machine has cores, and waits for
/// them. After an item that raises no new one is begun, and its exception is raised here.
void RunOnAllCores(std::size_t itemCount, Progress& progress, const CoreWork& work);

}  // namespace patcher::publisher
