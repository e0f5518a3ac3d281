#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

/// Synchronous HTTP, cut to GET requests whose body the caller pulls. Redirects are followed, never from
/// https to http; the system's certificates and proxy settings hold (on Linux the variable SSL_CERT_FILE may
/// name other certificates). A connection that is not made in 60 s, a
/// head of a response that is not whole 60 s after the request was sent, and a transfer that brings nothing
/// for 30 s fail; one that brings little is the caller's to judge. Error numbers are those of the system's
/// HTTP library (WinHTTP or libcurl) and only serve the debug log; the two halves do not share them. On an
/// object that was never opened every step fails, and there is no status and no length.
namespace platform {

struct ServerAddress {
  bool secure = false;     ///< https
  std::string host;        ///< UTF-8, at most 255 characters; an IPv6 address keeps its brackets
  std::uint16_t port = 0;  ///< the scheme's default if the URL names none
};

/// Scheme, host and port of an http or https URL; anything after them is ignored. Nothing for any other
/// text.
std::optional<ServerAddress> CrackUrl(const std::string& url);

/// What an error number of HttpRequest means, in the words of the system's HTTP library, for people.
std::string HttpErrorText(std::uint32_t error);

class HttpConnection;

/// A client with one user agent. Finished connections are kept and used again by later requests, on any
/// thread.
class HttpClient {
 public:
  HttpClient();
  ~HttpClient();
  HttpClient(HttpClient&&) noexcept;
  HttpClient& operator=(HttpClient&&) noexcept;

  /// False if the system gives no client. Called once.
  [[nodiscard]] bool Open(const std::string& userAgent);
  /// Parallel connections allowed to one server. A wish: failure is not reported.
  void SetMaxConnectionsPerServer(std::uint32_t count);

  struct Impl;

 private:
  friend class HttpConnection;
  std::unique_ptr<Impl> impl_;
};

/// One server as seen by one client. Holds no network connection by itself. The client outlives it.
class HttpConnection {
 public:
  HttpConnection();
  ~HttpConnection();
  HttpConnection(HttpConnection&&) noexcept;
  HttpConnection& operator=(HttpConnection&&) noexcept;

  /// False if the object cannot be made. No network work.
  [[nodiscard]] bool Open(HttpClient& client, const ServerAddress& server);

  struct Impl;

 private:
  friend class HttpRequest;
  std::unique_ptr<Impl> impl_;
};

/// One GET. Belongs to one thread at a time; many may be open on one connection. The connection outlives it.
/// The steps are called in this order: Open, Send, ReceiveResponse, Status, Header and AnnouncedLength, then
/// QueryDataAvailable and ReadData in turns. Each step returns 0 for success, else the error number.
class HttpRequest {
 public:
  enum class Redirects { kFollow, kReport };  ///< a reported one is a response like any other

  HttpRequest();
  ~HttpRequest();
  HttpRequest(HttpRequest&&) noexcept;
  HttpRequest& operator=(HttpRequest&&) noexcept;

  /// `encodedPath` starts with a slash and is sent unchanged.
  [[nodiscard]] std::uint32_t Open(HttpConnection& connection, const std::string& encodedPath,
                                   Redirects redirects = Redirects::kFollow);
  /// Where a server that is down first fails.
  [[nodiscard]] std::uint32_t Send();
  /// Returns when the final response's headers are in, redirects followed.
  [[nodiscard]] std::uint32_t ReceiveResponse();
  /// Status code of that response; 0 if there is none.
  [[nodiscard]] std::uint32_t Status();
  /// Value of a header of that response, by its name in letters of any case; several of one name are joined
  /// by ", ". Nothing if there is none.
  std::optional<std::string> Header(const std::string& name) const;
  /// Bytes of the body that this response has announced; nothing if it has not, as with chunks.
  std::optional<std::uint64_t> AnnouncedLength() const;
  /// Blocks until bytes of the body can be read; `available` 0 is the end of the body. A body that ends
  /// before its announced length is an error.
  [[nodiscard]] std::uint32_t QueryDataAvailable(std::uint32_t& available);
  /// Reads at most `size` of the available bytes, without waiting for more; `read` is never above it.
  [[nodiscard]] std::uint32_t ReadData(void* buffer, std::uint32_t size, std::uint32_t& read);

  struct Impl;

 private:
  std::unique_ptr<Impl> impl_;
};

}  // namespace platform
