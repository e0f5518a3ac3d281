#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace patcher::publisher {

/// The result of a check of a folder or a server.
struct CheckResult {
  std::string summary;                ///< what was checked
  std::vector<std::string> findings;  ///< one sentence each; empty if nothing is wrong
};

/// Reads and checks everything in a web server's folder: the sizes and digests of all contents that the
/// manifest and the copies in the history name, the content of the live version's archives, and all other
/// files with a digest in their name. Changes nothing. Raises PublishError if there is no manifest.
[[nodiscard]] CheckResult CheckPublication(const std::filesystem::path& www, bool quiet);

}  // namespace patcher::publisher
