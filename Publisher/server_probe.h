#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "platform/http.h"

namespace patcher::publisher {

/// A response whose head has arrived.
struct ServerResponse {
  platform::HttpRequest request;
  std::uint32_t status = 0;
  std::optional<std::uint64_t> length;  ///< bytes of the body that the response announces
  std::string redirectedTo;             ///< where it was asked for first pointed to; empty if nowhere else
};

/// Asks a server as the launcher does. The server is not trusted. Any thread.
class ServerProbe {
 public:
  /// Raises PublishError if `url` is no http or https address. No byte goes over the network yet.
  ServerProbe(const std::string& url, std::uint32_t connections);

  const platform::ServerAddress& Address() const { return address_; }

  /// GET of a path that starts with a slash. Follows redirects, but never from https to http. Raises
  /// PublishError if there is no response.
  ServerResponse Ask(const std::string& path);

 private:
  platform::HttpRequest Send(const std::string& path, platform::HttpRequest::Redirects redirects);

  platform::ServerAddress address_;
  platform::HttpClient client_;
  platform::HttpConnection connection_;
};

using BodyTaker = std::function<void(const char* block, std::size_t size)>;

/// Reads a body to its end. Raises PublishError if it breaks off, goes silent as the launcher understands it,
/// or has more than `limit` bytes: no more than that is passed on.
void ReadBody(ServerResponse& response, std::uint64_t limit, const BodyTaker& take);

}  // namespace patcher::publisher
