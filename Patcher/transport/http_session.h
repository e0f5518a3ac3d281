#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>

#include "platform/http.h"
#include "transport/file_download.h"

namespace patcher {

/// The HTTP client of one operation (an update run, a check, a news fetch). Connect and Close belong to the
/// operation's thread with no pool active; the other calls may run on many threads at once. Request paths
/// start with a slash and are not yet encoded; only status 200 is success; failures of requests go to the
/// debug log.
class HttpSession {
 public:
  /// No byte goes over the network yet. On false `error` is a text for the player.
  [[nodiscard]] bool Connect(const std::string& baseUrl, std::string& error);

  /// Safe after a failed Connect, and more than once.
  void Close();

  /// A request whose response has arrived with status 200, or nothing.
  std::optional<platform::HttpRequest> OpenGet(const std::string& path);

  /// The body of a document. False, with `body` untouched, if there is no response with status 200. A
  /// transfer that breaks midway or goes silent (TransferPace) gives true and what came until then. Reading
  /// ends when `enough` bytes are there, so that a document of no use costs no memory.
  [[nodiscard]] bool GetToString(const std::string& path, std::string& body,
                                 std::size_t enough = std::string::npos);

  /// Streams a body to `destination` followed by ".part" while hashing it, then puts it in place, replacing
  /// what is there even if it is in use. `digest` is the hexadecimal SHA-256 of what arrived; judging it is
  /// the caller's work. False if the transfer breaks, goes silent (TransferPace), is larger than the rules
  /// allow or not accepted by them, or the disk refuses it. On false no .part file stays, and `destination`
  /// is untouched unless everything arrived and could not be put in place: a file in use then has its name
  /// followed by ".old".
  [[nodiscard]] bool DownloadToFile(const std::string& path, const std::filesystem::path& destination,
                                    const DownloadRules& rules, std::string& digest);

 private:
  platform::HttpClient session_;
  platform::HttpConnection connection_;
};

}  // namespace patcher
