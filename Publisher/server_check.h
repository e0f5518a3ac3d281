#pragma once

#include <string>

#include "store_check.h"

namespace patcher::publisher {

struct ServerCheckRequest {
  std::string url;   ///< scheme, host and optional port
  bool all = false;  ///< read and hash every content, not only a sample
  bool quiet = false;
};

/// Asks a web server for the manifest and for everything that it names, as launchers do, and proves what
/// comes: status, length, digests (of a random sample, of all that is small, or of everything), cache
/// headers, that nothing is encoded, and that the history is not served. The server is not trusted: memory is
/// bounded, and a server that fails often is given up. Raises PublishError if `url` is no address.
CheckResult CheckServer(const ServerCheckRequest& request);

}  // namespace patcher::publisher
