#include "transport/http_session.h"

#include <algorithm>
#include <array>

#include "transport/body_reader.h"
#include "transport/config.h"
#include "transport/debug_log.h"
#include "transport/request_path.h"

namespace patcher {
namespace {

constexpr std::uint32_t kStatusOk = 200;

void LogFailure(const char* step, const std::string& path, std::uint32_t error) {
  DebugLog::Write(step + (" " + path + " err=" + std::to_string(error)));
}

/// Appends a block. Doubles the capacity when needed, but not beyond `enough`, because documents can be
/// large.
void Append(std::string& body, const char* block, std::size_t size, std::size_t enough) {
  const std::size_t needed = body.size() + size;
  if (needed > body.capacity()) body.reserve(std::max(needed, std::min(body.capacity() * 2, enough)));
  body.append(block, size);
}

}  // namespace

bool HttpSession::Connect(const std::string& baseUrl, std::string& error) {
  std::optional<platform::ServerAddress> server = platform::CrackUrl(baseUrl);
  if (!server) {
    error = "URL de patch invalide: " + baseUrl;
    return false;
  }
  if (!session_.Open(kUserAgent)) {
    error = "WinHttpOpen a echoue";
    return false;
  }
  session_.SetMaxConnectionsPerServer(static_cast<std::uint32_t>(PatchConfig::Current().connections));
  if (!connection_.Open(session_, *server)) {
    error = "Impossible de se connecter au serveur de patch";
    return false;
  }
  return true;
}

void HttpSession::Close() {
  connection_ = {};
  session_ = {};
}

std::optional<platform::HttpRequest> HttpSession::OpenGet(const std::string& path) {
  platform::HttpRequest request;
  if (std::uint32_t error = request.Open(connection_, PercentEncodePath(path)); error != 0) {
    LogFailure("OpenRequest", path, error);
    return std::nullopt;
  }
  if (std::uint32_t error = request.Send(); error != 0) {
    LogFailure("SendRequest", path, error);
    return std::nullopt;
  }
  if (std::uint32_t error = request.ReceiveResponse(); error != 0) {
    LogFailure("ReceiveResponse", path, error);
    return std::nullopt;
  }
  if (std::uint32_t status = request.Status(); status != kStatusOk) {
    DebugLog::Write("Status " + std::to_string(status) + " " + path);
    return std::nullopt;
  }
  return request;
}

bool HttpSession::GetToString(const std::string& path, std::string& body, std::size_t enough) {
  std::optional<platform::HttpRequest> request = OpenGet(path);
  if (!request) return false;
  body.clear();
  if (const auto announced = request->AnnouncedLength()) {
    body.reserve(static_cast<std::size_t>(std::min<std::uint64_t>(*announced, enough)));
  }
  BodyReader reader(*request);
  std::array<char, 8192> buffer;
  while (body.size() < enough) {
    std::uint32_t read = 0;
    if (!reader.Read(buffer.data(), static_cast<std::uint32_t>(buffer.size()), read)) {
      if (reader.IsSilent()) DebugLog::Write(reader.FailureLine(path));
      break;
    }
    if (read == 0) break;
    Append(body, buffer.data(), read, enough);
  }
  return true;
}

bool HttpSession::DownloadToFile(const std::string& path, const std::filesystem::path& destination,
                                 const DownloadRules& rules, std::string& digest) {
  return ReceiveFile(OpenGet(path), path, destination, rules, digest);
}

}  // namespace patcher
