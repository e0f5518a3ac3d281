#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

/// Synchronous HTTP GET requests; the caller reads the body block by block. Redirects are followed, but never
/// from https to http. The system's certificates and proxy settings apply (on Linux the variable
/// SSL_CERT_FILE can name other certificates). A request fails if the connection takes more than 60 s, if the
/// response's headers are not complete 60 s after the request was sent, or if no byte arrives for 30 s. The
/// caller decides whether a slow transfer is too slow. Error numbers are those of the system's HTTP library
/// (WinHTTP or libcurl), differ between the halves and are only for the debug log. On an object that was
/// never opened every step fails, and there is no status and no length.
namespace platform {

struct ServerAddress {
  bool secure = false;     ///< https
  std::string host;        ///< UTF-8, at most 255 characters; an IPv6 address keeps its brackets
  std::uint16_t port = 0;  ///< the scheme's default if the URL names none
};

/// Scheme, host and port of an http or https URL; anything after them is ignored. Nothing for any other
/// text.
std::optional<ServerAddress> CrackUrl(const std::string& url);

/// The HTTP library's text for an error number of HttpRequest.
std::string HttpErrorText(std::uint32_t error);

class HttpConnection;

/// A client with one user agent. Keeps idle connections and reuses them for later requests, on any thread.
class HttpClient {
 public:
  HttpClient();
  ~HttpClient();
  HttpClient(HttpClient&&) noexcept;
  HttpClient& operator=(HttpClient&&) noexcept;

  /// Returns false if the system cannot create a client. Called once.
  [[nodiscard]] bool Open(const std::string& userAgent);
  /// Limits the parallel connections to one server. Best effort: a failure is not reported.
  void SetMaxConnectionsPerServer(std::uint32_t count);

  struct Impl;

 private:
  friend class HttpConnection;
  std::unique_ptr<Impl> impl_;
};

/// The address of one server for one client. Holds no network connection itself. The client must outlive it.
class HttpConnection {
 public:
  HttpConnection();
  ~HttpConnection();
  HttpConnection(HttpConnection&&) noexcept;
  HttpConnection& operator=(HttpConnection&&) noexcept;

  /// Returns false if the object cannot be created. Does not use the network.
  [[nodiscard]] bool Open(HttpClient& client, const ServerAddress& server);

  struct Impl;

 private:
  friend class HttpRequest;
  std::unique_ptr<Impl> impl_;
};

/// One GET request. Used by one thread at a time; several may be open on one connection, which must outlive
/// them. Call the steps in this order: Open, Send, ReceiveResponse, Status, Header and AnnouncedLength, then
/// QueryDataAvailable and ReadData alternately. Each step returns 0 for success, else the error number.
class HttpRequest {
 public:
  enum class Redirects { kFollow, kReport };  ///< kReport: a redirect is a normal response

  HttpRequest();
  ~HttpRequest();
  HttpRequest(HttpRequest&&) noexcept;
  HttpRequest& operator=(HttpRequest&&) noexcept;

  /// `encodedPath` starts with a slash and is sent unchanged.
  [[nodiscard]] std::uint32_t Open(HttpConnection& connection, const std::string& encodedPath,
                                   Redirects redirects = Redirects::kFollow);
  /// Fails if the server cannot be reached.
  [[nodiscard]] std::uint32_t Send();
  /// Follows redirects and returns when the final response's headers have arrived.
  [[nodiscard]] std::uint32_t ReceiveResponse();
  /// Status code of that response; 0 if there is none.
  [[nodiscard]] std::uint32_t Status();
  /// Value of that response's header `name` (the case of letters does not count). Several headers of one name
  /// are joined by ", ". Nothing if there is none.
  std::optional<std::string> Header(const std::string& name) const;
  /// The length of the body in bytes that this response announces; nothing if it announces none, for example
  /// with chunked encoding.
  std::optional<std::uint64_t> AnnouncedLength() const;
  /// Blocks until bytes of the body can be read; `available` 0 is the end of the body. A body that ends
  /// before its announced length is an error.
  [[nodiscard]] std::uint32_t QueryDataAvailable(std::uint32_t& available);
  /// Reads at most `size` of the available bytes without waiting for more, and sets `read` to their number.
  [[nodiscard]] std::uint32_t ReadData(void* buffer, std::uint32_t size, std::uint32_t& read);

  struct Impl;

 private:
  std::unique_ptr<Impl> impl_;
};

}  // namespace platform
