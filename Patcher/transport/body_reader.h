#pragma once

#include <cstdint>
#include <string>

#include "platform/http.h"
#include "transport/transfer_pace.h"

namespace patcher {

/// Reads the body of a response block by block. Fails if the transfer is silent or too slow (TransferPace).
class BodyReader {
 public:
  /// Create it after the response has arrived. The request must outlive the reader.
  explicit BodyReader(platform::HttpRequest& request) : request_(request) {}

  /// Waits for the next block of at most `size` bytes. `read` is 0 at the end of the body. Returns false if
  /// the transfer has failed.
  [[nodiscard]] bool Read(void* buffer, std::uint32_t size, std::uint32_t& read);

  /// Whether the transfer failed because it was too slow.
  bool IsSilent() const { return silent_; }
  /// The error number of the step that failed; 0 if none did.
  std::uint32_t Error() const { return error_; }
  /// The debug log's line about the failed transfer of `path`.
  std::string FailureLine(const std::string& path) const;

 private:
  bool ReadBlock(void* buffer, std::uint32_t size, std::uint32_t& read);

  platform::HttpRequest& request_;
  TransferPace pace_;
  const char* step_ = "";    // the step that failed
  std::uint32_t error_ = 0;  // its error number
  bool silent_ = false;
};

}  // namespace patcher
