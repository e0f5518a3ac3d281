#pragma once

#include <string>

#include "folder_check.h"

namespace patcher::publisher {

struct ServerCheckRequest {
  std::string url;   ///< scheme, host and optional port
  bool all = false;  ///< read and hash every content, not only a sample
  bool quiet = false;
};

/// Requests the manifest and all its contents from a web server, like launchers do. Checks status, length,
/// cache headers, that nothing is encoded, and that the history is not served. Checks the digests of small
/// contents and of a random sample of the others, or of everything. Does not trust the server: memory is
/// limited, and the check stops after many failures. Raises PublishError if `url` is not a valid address.
[[nodiscard]] CheckResult CheckServer(const ServerCheckRequest& request);

}  // namespace patcher::publisher
