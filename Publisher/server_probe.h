#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "platform/http.h"

namespace patcher::publisher {

/// A response after its headers have arrived.
struct ServerResponse {
  platform::HttpRequest request;
  std::uint32_t status = 0;
  std::optional<std::uint64_t> length;  ///< announced bytes of the body
  std::string redirectedTo;             ///< address that the first response redirected to; empty: no redirect
};

/// Sends requests to a server like the launcher. Does not trust the server. Any thread.
class ServerProbe {
 public:
  /// Raises PublishError if `url` is not an http or https address. Does not connect yet.
  ServerProbe(const std::string& url, std::uint32_t connections);

  [[nodiscard]] const platform::ServerAddress& Address() const { return address_; }

  /// Sends a GET request for a path, which starts with a slash. Follows redirects, but never from https to
  /// http. Raises PublishError if there is no response.
  [[nodiscard]] ServerResponse Ask(const std::string& path);

 private:
  [[nodiscard]] platform::HttpRequest Send(const std::string& path,
                                           platform::HttpRequest::Redirects redirects);

  platform::ServerAddress address_;
  platform::HttpClient client_;
  platform::HttpConnection connection_;
};

using BodyTaker = std::function<void(const char* block, std::size_t size)>;

/// Reads a body to its end and passes it to `take`, at most `limit` bytes. Raises PublishError if the body is
/// cut, has more bytes than that, or stops for as long as the launcher's time limit.
void ReadBody(ServerResponse& response, std::uint64_t limit, const BodyTaker& take);

}  // namespace patcher::publisher
