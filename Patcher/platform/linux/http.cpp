#include "platform/http.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include <curl/curl.h>

#include "platform/mutex.h"

namespace platform {
namespace {

constexpr std::size_t kMaxHostLength = 255;
constexpr long kConnectSeconds = 60;
constexpr std::chrono::seconds kSilence{30};
/// Longest wait for the headers of a response, and for the next byte of its body. The limit for silence does
/// not cover a server that sends headers or trailers very slowly.
constexpr std::chrono::seconds kLongestWait{60};
constexpr std::chrono::seconds kLongestSend = kSilence + std::chrono::seconds(kConnectSeconds);
constexpr std::size_t kMaxHeadSize = std::size_t{256} * 1024;
constexpr long kReceiveBuffer = 128L * 1024;
/// The transfer is paused while this many bytes wait for the caller.
constexpr std::size_t kMaxPending = std::size_t{512} * 1024;

struct UrlDeleter {
  void operator()(CURLU* url) const { curl_url_cleanup(url); }
};

std::optional<std::string> UrlPart(CURLU* url, CURLUPart part, unsigned flags = 0) {
  char* text = nullptr;
  if (curl_url_get(url, part, &text, flags) != CURLUE_OK) return std::nullopt;
  std::string copy(text);
  curl_free(text);
  return copy;
}

/// One transfer engine, used by one request after the other. Its cache keeps connections open between them.
struct Engine {
  CURLM* multi = curl_multi_init();
  CURL* easy = curl_easy_init();
  std::vector<char> pending;  // received, not yet read; kept here to reuse its memory

  Engine() = default;
  Engine(const Engine&) = delete;
  Engine& operator=(const Engine&) = delete;
  ~Engine() {
    if (multi != nullptr && easy != nullptr) curl_multi_remove_handle(multi, easy);
    curl_easy_cleanup(easy);
    curl_multi_cleanup(multi);
  }
  bool IsWhole() const { return multi != nullptr && easy != nullptr; }
};

/// Process-wide set-up of the library. Thread-safe, because static initialisation is; never undone.
void InitialiseLibrary() {
  static const CURLcode done = curl_global_init(CURL_GLOBAL_DEFAULT);
  static_cast<void>(done);
}

}  // namespace

std::string HttpErrorText(std::uint32_t error) { return curl_easy_strerror(static_cast<CURLcode>(error)); }

std::optional<ServerAddress> CrackUrl(const std::string& text) {
  InitialiseLibrary();
  const std::unique_ptr<CURLU, UrlDeleter> url(curl_url());
  // Allows blanks after the host, because that part is ignored. The library still rejects blanks in the host.
  if (!url || curl_url_set(url.get(), CURLUPART_URL, text.c_str(), CURLU_ALLOW_SPACE) != CURLUE_OK) {
    return std::nullopt;
  }
  const auto scheme = UrlPart(url.get(), CURLUPART_SCHEME);
  const auto host = UrlPart(url.get(), CURLUPART_HOST);
  const auto port = UrlPart(url.get(), CURLUPART_PORT, CURLU_DEFAULT_PORT);
  if (!scheme || (*scheme != "http" && *scheme != "https") || !port) return std::nullopt;
  if (!host || host->empty() || host->size() > kMaxHostLength) return std::nullopt;
  return ServerAddress{*scheme == "https", *host, static_cast<std::uint16_t>(std::stoul(*port))};
}

struct HttpClient::Impl {
  std::string userAgent;
  Mutex lock;
  std::vector<std::unique_ptr<Engine>> idle PATCHER_GUARDED_BY(lock);

  std::unique_ptr<Engine> Take() {
    {
      const MutexLock guard(lock);
      if (!idle.empty()) {
        // The most recently used engine is the most likely to have an open connection.
        auto engine = std::move(idle.back());
        idle.pop_back();
        return engine;
      }
    }
    return std::make_unique<Engine>();
  }

  void GiveBack(std::unique_ptr<Engine> engine) {
    const MutexLock guard(lock);
    idle.push_back(std::move(engine));
  }
};

HttpClient::HttpClient() = default;
HttpClient::~HttpClient() = default;
HttpClient::HttpClient(HttpClient&&) noexcept = default;
HttpClient& HttpClient::operator=(HttpClient&&) noexcept = default;

bool HttpClient::Open(const std::string& userAgent) {
  InitialiseLibrary();
  impl_ = std::make_unique<Impl>();
  impl_->userAgent = userAgent;
  return true;
}

// Each request has its own engine and connection: there is no limit to raise.
void HttpClient::SetMaxConnectionsPerServer(std::uint32_t) {}

struct HttpConnection::Impl {
  HttpClient::Impl& client;
  bool secure;
  std::string origin;  // scheme, host and port
};

HttpConnection::HttpConnection() = default;
HttpConnection::~HttpConnection() = default;
HttpConnection::HttpConnection(HttpConnection&&) noexcept = default;
HttpConnection& HttpConnection::operator=(HttpConnection&&) noexcept = default;

bool HttpConnection::Open(HttpClient& client, const ServerAddress& server) {
  if (!client.impl_) return false;
  const std::string scheme = server.secure ? "https://" : "http://";
  impl_ = std::make_unique<Impl>(
      Impl{*client.impl_, server.secure, scheme + server.host + ":" + std::to_string(server.port)});
  return true;
}

struct HttpRequest::Impl {
  Impl(HttpConnection::Impl& from, Redirects redirects)
      : client(from.client), engine(client.Take()), follows(redirects == Redirects::kFollow) {}
  Impl(const Impl&) = delete;
  Impl& operator=(const Impl&) = delete;

  ~Impl() {
    if (!engine->IsWhole()) return;
    // Removing an unfinished transfer closes its connection; a finished one stays open in the engine's cache.
    curl_multi_remove_handle(engine->multi, engine->easy);
    curl_easy_reset(engine->easy);
    engine->pending.clear();
    client.GiveBack(std::move(engine));
  }

  HttpClient::Impl& client;
  std::unique_ptr<Engine> engine;
  const bool follows;        // redirects
  std::size_t consumed = 0;  // bytes of `pending` that were read
  std::size_t headSize = 0;  // all headers of redirects and of the final response, and trailers
  bool paused = false;
  bool headersDone = false;  // those of a response that is not followed
  bool done = false;
  CURLcode result = CURLE_OK;
  std::chrono::steady_clock::time_point lastByte = std::chrono::steady_clock::now();

  std::size_t Available() const { return engine->pending.size() - consumed; }

  void NoteActivity() { lastByte = std::chrono::steady_clock::now(); }

  static std::size_t OnBody(char* data, std::size_t, std::size_t size, void* self) {
    auto& request = *static_cast<Impl*>(self);
    if (request.Available() + size > kMaxPending) {
      request.paused = true;
      return CURL_WRITEFUNC_PAUSE;
    }
    request.NoteActivity();
    std::vector<char>& pending = request.engine->pending;
    if (request.consumed == pending.size()) {
      pending.clear();
      request.consumed = 0;
    }
    pending.insert(pending.end(), data, data + size);
    return size;
  }

  static std::size_t OnHeader(char* data, std::size_t, std::size_t size, void* self) {
    auto& request = *static_cast<Impl*>(self);
    request.NoteActivity();
    request.headSize += size;
    if (request.headSize > kMaxHeadSize) return 0;
    const std::string_view line(data, size);
    const bool isEnd = line == "\r\n" || line == "\n";
    if (isEnd && request.Code() >= 200 && !request.IsFollowed()) request.headersDone = true;
    return size;
  }

  /// Whether the library follows the response that it has just received.
  bool IsFollowed() const {
    const std::uint32_t status = Code();
    return follows && status >= 300 && status < 400 && !Header("Location").value_or("").empty();
  }

  std::uint32_t Code() const {
    long code = 0;
    curl_easy_getinfo(engine->easy, CURLINFO_RESPONSE_CODE, &code);
    return static_cast<std::uint32_t>(code);
  }

  std::optional<std::string> Header(const std::string& name) const {
    std::optional<std::string> value;
    curl_header* header = nullptr;
    for (std::size_t i = 0;
         curl_easy_header(engine->easy, name.c_str(), i, CURLH_HEADER, -1, &header) == CURLHE_OK; ++i) {
      std::string_view text = header->value;
      // Older versions of the library leave the line end in an empty value.
      if (text.ends_with('\r')) text.remove_suffix(1);
      value = (value ? *value + ", " : std::string()).append(text);
    }
    return value;
  }

  void SetOptions(const HttpConnection::Impl& connection, const std::string& encodedPath) {
    CURL* easy = engine->easy;
    curl_easy_setopt(easy, CURLOPT_URL, (connection.origin + encodedPath).c_str());
    curl_easy_setopt(easy, CURLOPT_PATH_AS_IS, 1L);
    curl_easy_setopt(easy, CURLOPT_USERAGENT, client.userAgent.c_str());
    curl_easy_setopt(easy, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
    // A proxy's response to CONNECT must not be mistaken for the server's.
    curl_easy_setopt(easy, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, follows ? 1L : 0L);
    curl_easy_setopt(easy, CURLOPT_MAXREDIRS, 10L);
    curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(easy, CURLOPT_REDIR_PROTOCOLS_STR, connection.secure ? "https" : "http,https");
    // OpenSSL's variable; libcurl itself does not read it.
    if (const char* certificates = std::getenv("SSL_CERT_FILE")) {
      curl_easy_setopt(easy, CURLOPT_CAINFO, certificates);
    }
    curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT, kConnectSeconds);
    curl_easy_setopt(easy, CURLOPT_BUFFERSIZE, kReceiveBuffer);
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &Impl::OnBody);
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, this);
    curl_easy_setopt(easy, CURLOPT_HEADERFUNCTION, &Impl::OnHeader);
    curl_easy_setopt(easy, CURLOPT_HEADERDATA, this);
  }

  /// The request is sent as soon as there is a connection.
  bool IsSent() const {
    curl_off_t sent = 0;
    curl_easy_getinfo(engine->easy, CURLINFO_PRETRANSFER_TIME_T, &sent);
    return sent > 0;
  }

  /// Runs the transfer until `enough` returns true, the transfer ends, or `limit` has passed.
  template <typename Condition>
  CURLcode Drive(Condition enough, std::chrono::seconds limit) {
    // The time between two calls does not count as silence.
    NoteActivity();
    const auto deadline = lastByte + limit;
    while (!enough() && !done) {
      int running = 0;
      if (curl_multi_perform(engine->multi, &running) != CURLM_OK) return Finish(CURLE_RECV_ERROR);
      int left = 0;
      while (const CURLMsg* message = curl_multi_info_read(engine->multi, &left)) {
        if (message->msg == CURLMSG_DONE) Finish(message->data.result);
      }
      if (enough() || done) break;
      if (IsSilent() || std::chrono::steady_clock::now() > deadline) return Finish(CURLE_OPERATION_TIMEDOUT);
      curl_multi_poll(engine->multi, nullptr, 0, 1000, nullptr);
    }
    return result;
  }

  /// Whether an open connection has been silent for too long. Connecting has its own limit.
  bool IsSilent() const {
    const auto limit = IsSent() ? kSilence : kLongestSend;
    return std::chrono::steady_clock::now() - lastByte > limit;
  }

  CURLcode Finish(CURLcode code) {
    done = true;
    result = code;
    return code;
  }
};

HttpRequest::HttpRequest() = default;
HttpRequest::~HttpRequest() = default;
HttpRequest::HttpRequest(HttpRequest&&) noexcept = default;
HttpRequest& HttpRequest::operator=(HttpRequest&&) noexcept = default;

std::uint32_t HttpRequest::Open(HttpConnection& connection, const std::string& encodedPath,
                                Redirects redirects) {
  if (!connection.impl_) return CURLE_FAILED_INIT;
  auto request = std::make_unique<Impl>(*connection.impl_, redirects);
  if (!request->engine->IsWhole()) return CURLE_FAILED_INIT;
  request->SetOptions(*connection.impl_, encodedPath);
  impl_ = std::move(request);
  return 0;
}

std::uint32_t HttpRequest::Send() {
  if (!impl_) return CURLE_FAILED_INIT;
  if (curl_multi_add_handle(impl_->engine->multi, impl_->engine->easy) != CURLM_OK) return CURLE_FAILED_INIT;
  const auto isSent = [this] { return impl_->IsSent(); };
  const CURLcode error = impl_->Drive(isSent, kLongestSend);
  // ReceiveResponse reports failures after the request, even if they happen in this call.
  return isSent() ? 0 : error;
}

std::uint32_t HttpRequest::ReceiveResponse() {
  if (!impl_) return CURLE_FAILED_INIT;
  const CURLcode error = impl_->Drive([this] { return impl_->headersDone; }, kLongestWait);
  // QueryDataAvailable reports failures after the headers.
  return impl_->headersDone ? 0 : error;
}

std::uint32_t HttpRequest::Status() { return impl_ ? impl_->Code() : 0; }

std::optional<std::string> HttpRequest::Header(const std::string& name) const {
  return impl_ ? impl_->Header(name) : std::nullopt;
}

std::optional<std::uint64_t> HttpRequest::AnnouncedLength() const {
  if (!impl_) return std::nullopt;
  curl_off_t length = -1;
  curl_easy_getinfo(impl_->engine->easy, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &length);
  if (length < 0) return std::nullopt;
  return static_cast<std::uint64_t>(length);
}

std::uint32_t HttpRequest::QueryDataAvailable(std::uint32_t& available) {
  available = 0;
  if (!impl_) return CURLE_FAILED_INIT;
  if (impl_->Available() == 0 && impl_->paused) {
    impl_->paused = false;
    curl_easy_pause(impl_->engine->easy, CURLPAUSE_CONT);
  }
  const CURLcode error = impl_->Drive([this] { return impl_->Available() > 0; }, kLongestWait);
  available = static_cast<std::uint32_t>(impl_->Available());
  return available > 0 ? 0 : error;
}

std::uint32_t HttpRequest::ReadData(void* buffer, std::uint32_t size, std::uint32_t& read) {
  read = 0;
  if (!impl_) return CURLE_FAILED_INIT;
  read = static_cast<std::uint32_t>(std::min<std::size_t>(size, impl_->Available()));
  std::memcpy(buffer, impl_->engine->pending.data() + impl_->consumed, read);
  impl_->consumed += read;
  return 0;
}

}  // namespace platform
