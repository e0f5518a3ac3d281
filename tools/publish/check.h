#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace patcher {

/// What a look at a whole publication found.
struct CheckResult {
  std::string summary;                ///< what was looked at
  std::vector<std::string> findings;  ///< a sentence each; none means that it is sound
};

/// Reads everything that the manifest of a web server's folder names, and proves it: sizes, digests, what
/// every archive holds. Raises PublishError if there is no manifest to begin with.
CheckResult CheckPublication(const std::filesystem::path& www, bool quiet);

}  // namespace patcher
