#include <windows.h>

#include "platform/http.h"

#include <algorithm>
#include <cwchar>
#include <iterator>
#include <string>
#include <string_view>

#include <winhttp.h>

#include "platform/text.h"
#include "platform/windows/native_text.h"

namespace platform {
namespace {

struct HandleCloser {
  void operator()(void* handle) const { WinHttpCloseHandle(handle); }
};
using Handle = std::unique_ptr<void, HandleCloser>;

constexpr std::size_t kSchemeBuffer = 16;
constexpr std::size_t kHostBuffer = 256;
constexpr DWORD kHeadMilliseconds = 60'000;

}  // namespace

std::string HttpErrorText(std::uint32_t error) {
  wchar_t text[512] = {};
  constexpr DWORD kFlags =
      FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
  FormatMessageW(kFlags, GetModuleHandleW(L"winhttp.dll"), error, 0, text, std::size(text), nullptr);
  const std::wstring_view words = text;
  const std::wstring_view line = words.substr(0, words.find_last_not_of(L"\r\n. ") + 1);
  if (line.empty()) return "error " + std::to_string(error) + " of WinHTTP";
  return WideToUtf8(std::u16string(line.begin(), line.end()));
}

std::optional<ServerAddress> CrackUrl(const std::string& url) {
  const std::wstring wide = ToNative(Utf8ToWide(url));
  wchar_t scheme[kSchemeBuffer] = {};
  wchar_t host[kHostBuffer] = {};
  URL_COMPONENTS parts{};
  parts.dwStructSize = sizeof parts;
  parts.lpszScheme = scheme;
  parts.dwSchemeLength = kSchemeBuffer;
  parts.lpszHostName = host;
  parts.dwHostNameLength = kHostBuffer;
  parts.dwUrlPathLength = static_cast<DWORD>(-1);
  parts.dwExtraInfoLength = static_cast<DWORD>(-1);
  if (!WinHttpCrackUrl(wide.c_str(), static_cast<DWORD>(wide.size()), 0, &parts)) return std::nullopt;
  const std::wstring name = host;
  if (name.empty()) return std::nullopt;
  return ServerAddress{parts.nScheme == INTERNET_SCHEME_HTTPS, WideToUtf8(FromNative(name)), parts.nPort};
}

struct HttpClient::Impl {
  Handle session;
};

HttpClient::HttpClient() = default;
HttpClient::~HttpClient() = default;
HttpClient::HttpClient(HttpClient&&) noexcept = default;
HttpClient& HttpClient::operator=(HttpClient&&) noexcept = default;

bool HttpClient::Open(const std::string& userAgent) {
  impl_ = std::make_unique<Impl>();
  impl_->session.reset(WinHttpOpen(ToNative(Utf8ToWide(userAgent)).c_str(),
                                   WINHTTP_ACCESS_TYPE_AUTOMATIC_PROXY, WINHTTP_NO_PROXY_NAME,
                                   WINHTTP_NO_PROXY_BYPASS, 0));
  DWORD limit = kHeadMilliseconds;
  WinHttpSetOption(impl_->session.get(), WINHTTP_OPTION_RECEIVE_RESPONSE_TIMEOUT, &limit, sizeof limit);
  return impl_->session != nullptr;
}

void HttpClient::SetMaxConnectionsPerServer(std::uint32_t count) {
  if (!impl_) return;
  DWORD value = count;
  WinHttpSetOption(impl_->session.get(), WINHTTP_OPTION_MAX_CONNS_PER_SERVER, &value, sizeof value);
  WinHttpSetOption(impl_->session.get(), WINHTTP_OPTION_MAX_CONNS_PER_1_0_SERVER, &value, sizeof value);
}

struct HttpConnection::Impl {
  Handle connection;
  bool secure = false;
};

HttpConnection::HttpConnection() = default;
HttpConnection::~HttpConnection() = default;
HttpConnection::HttpConnection(HttpConnection&&) noexcept = default;
HttpConnection& HttpConnection::operator=(HttpConnection&&) noexcept = default;

bool HttpConnection::Open(HttpClient& client, const ServerAddress& server) {
  if (!client.impl_) return false;
  impl_ = std::make_unique<Impl>();
  impl_->secure = server.secure;
  impl_->connection.reset(
      WinHttpConnect(client.impl_->session.get(), ToNative(Utf8ToWide(server.host)).c_str(), server.port, 0));
  return impl_->connection != nullptr;
}

struct HttpRequest::Impl {
  Handle request;
  std::optional<std::uint64_t> announced;  // length of the body in bytes
  std::uint64_t missing = 0;               // announced bytes that are not read yet
  DWORD available = 0;                     // bytes that can be read without waiting

  bool HasHeader(DWORD header, wchar_t* text, DWORD size) const {
    return WinHttpQueryHeaders(request.get(), header, WINHTTP_HEADER_NAME_BY_INDEX, text, &size,
                               WINHTTP_NO_HEADER_INDEX) != FALSE;
  }

  void ReadAnnouncedLength() {
    wchar_t text[32] = {};
    constexpr DWORD kSize = sizeof text - sizeof(wchar_t);
    // With a transfer encoding, Content-Length does not count.
    if (HasHeader(WINHTTP_QUERY_TRANSFER_ENCODING, text, kSize)) return;
    // Query text: the numeric queries are limited to 32 bits or need a newer system.
    if (!HasHeader(WINHTTP_QUERY_CONTENT_LENGTH, text, kSize)) return;
    announced = std::wcstoull(text, nullptr, 10);
    missing = *announced;
  }

  static std::uint32_t ErrorUnless(BOOL success) { return success ? 0 : GetLastError(); }
};

HttpRequest::HttpRequest() = default;
HttpRequest::~HttpRequest() = default;
HttpRequest::HttpRequest(HttpRequest&&) noexcept = default;
HttpRequest& HttpRequest::operator=(HttpRequest&&) noexcept = default;

std::uint32_t HttpRequest::Open(HttpConnection& connection, const std::string& encodedPath,
                                Redirects redirects) {
  if (!connection.impl_) return ERROR_INVALID_HANDLE;
  impl_ = std::make_unique<Impl>();
  impl_->request.reset(WinHttpOpenRequest(
      connection.impl_->connection.get(), L"GET", ToNative(Utf8ToWide(encodedPath)).c_str(), nullptr,
      WINHTTP_NO_REFERER, WINHTTP_DEFAULT_ACCEPT_TYPES, connection.impl_->secure ? WINHTTP_FLAG_SECURE : 0));
  if (redirects == Redirects::kReport) {
    DWORD feature = WINHTTP_DISABLE_REDIRECTS;
    WinHttpSetOption(impl_->request.get(), WINHTTP_OPTION_DISABLE_FEATURE, &feature, sizeof feature);
  }
  return Impl::ErrorUnless(impl_->request != nullptr);
}

std::uint32_t HttpRequest::Send() {
  if (!impl_) return ERROR_INVALID_HANDLE;
  return Impl::ErrorUnless(WinHttpSendRequest(impl_->request.get(), WINHTTP_NO_ADDITIONAL_HEADERS, 0,
                                              WINHTTP_NO_REQUEST_DATA, 0, 0, 0));
}

std::uint32_t HttpRequest::ReceiveResponse() {
  if (!impl_) return ERROR_INVALID_HANDLE;
  const std::uint32_t error = Impl::ErrorUnless(WinHttpReceiveResponse(impl_->request.get(), nullptr));
  if (error == 0) impl_->ReadAnnouncedLength();
  return error;
}

std::uint32_t HttpRequest::Status() {
  if (!impl_) return 0;
  DWORD status = 0;
  DWORD size = sizeof status;
  WinHttpQueryHeaders(impl_->request.get(), WINHTTP_QUERY_STATUS_CODE | WINHTTP_QUERY_FLAG_NUMBER,
                      WINHTTP_HEADER_NAME_BY_INDEX, &status, &size, WINHTTP_NO_HEADER_INDEX);
  return status;
}

std::optional<std::string> HttpRequest::Header(const std::string& name) const {
  if (!impl_) return std::nullopt;
  const std::wstring wideName = ToNative(Utf8ToWide(name));
  std::optional<std::string> value;
  for (DWORD index = 0;;) {
    DWORD size = 0;
    DWORD at = index;
    WinHttpQueryHeaders(impl_->request.get(), WINHTTP_QUERY_CUSTOM, wideName.c_str(),
                        WINHTTP_NO_OUTPUT_BUFFER, &size, &at);
    if (GetLastError() != ERROR_INSUFFICIENT_BUFFER) return value;
    std::u16string text(size / sizeof(char16_t), u'\0');
    if (!WinHttpQueryHeaders(impl_->request.get(), WINHTTP_QUERY_CUSTOM, wideName.c_str(), text.data(), &size,
                             &index)) {
      return value;
    }
    text.resize(size / sizeof(char16_t));
    value = value ? *value + ", " + WideToUtf8(text) : WideToUtf8(text);
  }
}

std::optional<std::uint64_t> HttpRequest::AnnouncedLength() const {
  return impl_ ? impl_->announced : std::nullopt;
}

std::uint32_t HttpRequest::QueryDataAvailable(std::uint32_t& available) {
  available = 0;
  if (!impl_) return ERROR_INVALID_HANDLE;
  impl_->available = 0;
  const std::uint32_t error =
      Impl::ErrorUnless(WinHttpQueryDataAvailable(impl_->request.get(), &impl_->available));
  available = impl_->available;
  // The system may report a lost connection as the end of the body.
  return error == 0 && available == 0 && impl_->missing > 0 ? ERROR_WINHTTP_CONNECTION_ERROR : error;
}

std::uint32_t HttpRequest::ReadData(void* buffer, std::uint32_t size, std::uint32_t& read) {
  read = 0;
  if (!impl_) return ERROR_INVALID_HANDLE;
  // Request only available bytes: the system would wait without a limit for more.
  const DWORD wanted = std::min<DWORD>(size, impl_->available);
  DWORD count = 0;
  const std::uint32_t error =
      Impl::ErrorUnless(WinHttpReadData(impl_->request.get(), buffer, wanted, &count));
  impl_->available -= std::min(impl_->available, count);
  read = count;
  impl_->missing -= std::min<std::uint64_t>(impl_->missing, count);
  return error;
}

}  // namespace platform
