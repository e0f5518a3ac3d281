#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>

#include "platform/http.h"
#include "transport/file_download.h"

namespace patcher {

/// The HTTP client of one operation (an update run, a check, a news fetch). Call Connect and Close on the
/// operation's thread while no pool is running; the other methods may run on several threads at once. Request
/// paths start with a slash and are not encoded. Only status 200 is success. Failures are written to the
/// debug log.
class HttpSession {
 public:
  /// Does not use the network. If it returns false, `error` is a text for the player.
  [[nodiscard]] bool Connect(const std::string& baseUrl, std::string& error);

  /// May be called after a failed Connect and more than once.
  void Close();

  /// Sends a request. Returns it when a response with status 200 has arrived, else nothing.
  std::optional<platform::HttpRequest> OpenGet(const std::string& path);

  /// Reads the body of a document. Returns false and does not change `body` if there is no response with
  /// status 200. If the transfer breaks off or becomes too slow (TransferPace), returns true with the bytes
  /// that arrived. Stops reading after `enough` bytes, so that a document that is too large does not fill the
  /// memory.
  [[nodiscard]] bool GetToString(const std::string& path, std::string& body,
                                 std::size_t enough = std::string::npos);

  /// Writes a body to `destination` followed by ".part", computes its hash, then moves it to `destination`,
  /// replacing a file there even if it is in use. `digest` is the hexadecimal SHA-256 of the received bytes;
  /// the caller checks it. Returns false if the transfer breaks off, becomes too slow (TransferPace) or is
  /// larger than the rules allow, if the rules do not accept the file, or if the disk fails. No .part file
  /// remains then, and `destination` is unchanged, with two exceptions: if the complete file could not be
  /// moved to its place, a file in use may have been renamed to its name followed by ".old"; if it could not
  /// be copied there either, `destination` may have a part of the new content.
  [[nodiscard]] bool DownloadToFile(const std::string& path, const std::filesystem::path& destination,
                                    const DownloadRules& rules, std::string& digest);

 private:
  platform::HttpClient session_;
  platform::HttpConnection connection_;
};

}  // namespace patcher
