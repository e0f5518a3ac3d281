#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace patcher::publisher {

/// Lists the files that must be uploaded to a server with version `since` (0: an empty server) so that it has
/// the live version of `www`. One line for each file, in the order in which they must be uploaded, the
/// manifest last. A line is the file's path below `www` with forward slashes, its size in bytes, its
/// Content-Type and its Cache-Control, separated by tabs. Raises PublishError if no version is live, if the
/// history has no copy of `since`, or if a file is missing.
[[nodiscard]] std::vector<std::string> UploadList(const std::filesystem::path& www, std::int32_t since);

}  // namespace patcher::publisher
