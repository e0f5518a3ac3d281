#include "server_probe.h"

#include <array>

#include "publish_error.h"
#include "transport/body_reader.h"
#include "transport/request_path.h"

namespace patcher::publisher {
namespace {

using platform::HttpRequest;

constexpr std::size_t kBlockSize = 65536;

bool IsRedirect(std::uint32_t status) { return status >= 300 && status < 400 && status != 304; }

bool IsPlainHttp(const std::string& url) {
  const auto address = platform::CrackUrl(url);
  return address && !address->secure;
}

void RequireSuccess(std::uint32_t error) {
  if (error != 0) throw PublishError("no response: " + platform::HttpErrorText(error));
}

}  // namespace

ServerProbe::ServerProbe(const std::string& url, std::uint32_t connections) {
  const auto address = platform::CrackUrl(url);
  if (!address) throw PublishError("'" + url + "' is not the address of a server");
  address_ = *address;
  if (!client_.Open(kUserAgent)) throw PublishError("the system cannot create an HTTP client");
  client_.SetMaxConnectionsPerServer(connections);
  if (!connection_.Open(client_, address_))
    throw PublishError("the system cannot create an HTTP client for " + url);
}

ServerResponse ServerProbe::Ask(const std::string& path) {
  ServerResponse response;
  response.request = Send(path, HttpRequest::Redirects::kReport);
  const auto target = response.request.Header("Location");
  if (target && IsRedirect(response.request.Status())) {
    if (address_.secure && IsPlainHttp(*target)) {
      throw PublishError("it redirects to " + *target + ", and launchers never go from https to http");
    }
    response.redirectedTo = *target;
    response.request = Send(path, HttpRequest::Redirects::kFollow);
  }
  response.status = response.request.Status();
  response.length = response.request.AnnouncedLength();
  return response;
}

HttpRequest ServerProbe::Send(const std::string& path, HttpRequest::Redirects redirects) {
  HttpRequest request;
  RequireSuccess(request.Open(connection_, PercentEncodePath(path), redirects));
  RequireSuccess(request.Send());
  RequireSuccess(request.ReceiveResponse());
  return request;
}

void ReadBody(ServerResponse& response, std::uint64_t limit, const BodyTaker& take) {
  BodyReader reader(response.request);
  std::array<char, kBlockSize> block;
  std::uint64_t size = 0;
  for (;;) {
    std::uint32_t read = 0;
    if (!reader.Read(block.data(), kBlockSize, read)) {
      const std::string after = " after " + std::to_string(size) + " bytes";
      if (reader.IsSilent()) throw PublishError("the transfer stalled" + after);
      throw PublishError("the transfer was interrupted" + after + ": " +
                         platform::HttpErrorText(reader.Error()));
    }
    if (read == 0) return;
    size += read;
    if (size > limit) throw PublishError("it has more than " + std::to_string(limit) + " bytes");
    take(block.data(), read);
  }
}

}  // namespace patcher::publisher
