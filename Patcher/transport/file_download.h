#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "platform/http.h"

namespace patcher {

/// Called with the number of bytes of each block that arrived; may be empty.
using ByteCallback = std::function<void(std::uint64_t)>;

/// A body that has arrived as a file.
struct ReceivedFile {
  std::string digest;      ///< hexadecimal SHA-256
  std::uint64_t size = 0;  ///< bytes
  bool announced = false;  ///< by the response; if not, a cut body may pass for a whole one
};

/// What a download does apart from the transfer.
struct DownloadRules {
  std::uint64_t maxSize = 0;  ///< bytes; a longer body, or the announcement of one, is a failed transfer
  ByteCallback onBytes = {};
  /// Judges and prepares the received file, which is closed and still has its temporary name, before it is
  /// put in place; false makes the download fail. May be empty.
  std::function<bool(const std::filesystem::path& part, const ReceivedFile& received)> accept = {};
};

/// The rest of HttpSession::DownloadToFile once the response is there; `request` is nothing if there is none.
/// `path` is for the debug log.
[[nodiscard]] bool ReceiveFile(std::optional<platform::HttpRequest> request, const std::string& path,
                               const std::filesystem::path& destination, const DownloadRules& rules,
                               std::string& digest);

/// Makes way for a new file: if there is a file at `destination` that cannot be opened for exclusive writing,
/// it is moved to the same name followed by ".old", replacing a file of that name. True unless a needed move
/// failed.
[[nodiscard]] bool MoveLockedTargetAside(const std::filesystem::path& destination);

}  // namespace patcher
