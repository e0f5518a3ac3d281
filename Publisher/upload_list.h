#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace patcher::publisher {

/// What must be copied to a server that has version `since` (0: nothing), so that it has the live version of
/// `www`: a line for each file, in the order in which they must arrive, the manifest last. A line is the
/// file's path below `www` with forward slashes, its bytes, its Content-Type and its Cache-Control, separated
/// by tabs. Raises PublishError if nothing is live, if the history has no copy of
/// `since`, or if a file is missing.
std::vector<std::string> UploadList(const std::filesystem::path& www, std::int32_t since);

}  // namespace patcher::publisher
