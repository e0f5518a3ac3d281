#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace patcher::publisher {

/// What a look at a whole publication found.
struct CheckResult {
  std::string summary;                ///< what was looked at
  std::vector<std::string> findings;  ///< a sentence each; none means that it is sound
};

/// Reads everything in a web server's folder and proves it: sizes and digests of what the manifest and the
/// copies in the history name, what the live version's archives hold, and that everything else holds what its
/// name says. Changes nothing. Raises PublishError if there is no manifest to begin with.
CheckResult CheckPublication(const std::filesystem::path& www, bool quiet);

}  // namespace patcher::publisher
