#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "platform/http.h"

namespace patcher {

/// Called with the size of each block that arrives; may be empty.
using ByteCallback = std::function<void(std::uint64_t)>;

/// A body that has been stored as a file.
struct ReceivedFile {
  std::string digest;      ///< hexadecimal SHA-256
  std::uint64_t size = 0;  ///< bytes
  bool announced = false;  ///< the response announced its length; if not, a truncated body may look complete
};

/// Limits and checks of a download.
struct DownloadRules {
  std::uint64_t maxSize = 0;  ///< bytes; the transfer fails if the body or its announced length is larger
  ByteCallback onBytes = {};
  /// Checks and prepares the received file before it is moved to its place. The file is closed and still has
  /// its temporary name. The download fails if this returns false. May be empty.
  std::function<bool(const std::filesystem::path& part, const ReceivedFile& received)> accept = {};
};

/// The part of HttpSession::DownloadToFile after the response; `request` is nothing if there is no response.
/// `path` is for the debug log.
[[nodiscard]] bool ReceiveFile(std::optional<platform::HttpRequest> request, const std::string& path,
                               const std::filesystem::path& destination, const DownloadRules& rules,
                               std::string& digest);

/// If the file at `destination` cannot be opened for exclusive writing, moves it to the same name followed by
/// ".old", replacing a file of that name. Returns false only if this move failed.
[[nodiscard]] bool MoveLockedTargetAside(const std::filesystem::path& destination);

}  // namespace patcher
