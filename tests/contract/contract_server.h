#pragma once

#include <cstdint>
#include <cstdlib>
#include <optional>
#include <random>
#include <string>

#include "platform/http.h"

/// The server that run_contract has started.
inline platform::ServerAddress ContractServer() {
  const char* port = std::getenv("PATCHER_CONTRACT_PORT");
  return {false, "127.0.0.1", static_cast<std::uint16_t>(port == nullptr ? 0 : std::atoi(port))};
}

/// A key for the server's /late and /release that no earlier test has used.
inline std::string UniqueKey() { return "key" + std::to_string(std::random_device()()); }

/// The result of one GET.
struct Answer {
  std::uint32_t error = 0;  ///< of the first step that failed
  std::uint32_t status = 0;
  std::optional<std::uint64_t> announced;  ///< bytes of the body
  std::string body;
};

/// Reads the rest of a body in pieces of at most `piece` bytes.
inline void ReadBody(platform::HttpRequest& request, Answer& answer, std::uint32_t piece) {
  std::string block(piece, '\0');
  for (;;) {
    std::uint32_t available = 0;
    std::uint32_t read = 0;
    answer.error = request.QueryDataAvailable(available);
    if (answer.error != 0 || available == 0) return;
    answer.error = request.ReadData(block.data(), piece, read);
    if (answer.error != 0) return;
    answer.body.append(block, 0, read);
  }
}

/// The error of the first step that failed.
inline std::uint32_t Ask(
    platform::HttpRequest& request, platform::HttpConnection& connection, const std::string& path,
    platform::HttpRequest::Redirects redirects = platform::HttpRequest::Redirects::kFollow) {
  request = {};
  std::uint32_t error = request.Open(connection, path, redirects);
  if (error == 0) error = request.Send();
  return error != 0 ? error : request.ReceiveResponse();
}

inline Answer Get(platform::HttpConnection& connection, const std::string& path,
                  std::uint32_t piece = 65536) {
  platform::HttpRequest request;
  Answer answer;
  answer.error = Ask(request, connection, path);
  if (answer.error != 0) return answer;
  answer.status = request.Status();
  answer.announced = request.AnnouncedLength();
  ReadBody(request, answer, piece);
  return answer;
}

/// A client with a connection to the server.
struct Session {
  platform::HttpClient client;
  platform::HttpConnection connection;

  explicit Session(const platform::ServerAddress& server = ContractServer()) {
    // Without either, every request fails.
    static_cast<void>(client.Open("Contract/1.0"));
    client.SetMaxConnectionsPerServer(8);
    static_cast<void>(connection.Open(client, server));
  }
};
