#pragma once

#include <cstdint>
#include <string>

#include "platform/http.h"
#include "transport/transfer_pace.h"

namespace patcher {

/// Reads the body of a response block by block, and ends a transfer that has gone silent.
class BodyReader {
 public:
  /// The request's response has arrived. The request outlives the reader.
  explicit BodyReader(platform::HttpRequest& request) : request_(request) {}

  /// Waits for the next block of at most `size` bytes; `read` 0 is the end of the body. False if the transfer
  /// has failed.
  [[nodiscard]] bool Read(void* buffer, std::uint32_t size, std::uint32_t& read);

  /// Whether it failed because too little came.
  bool IsSilent() const { return silent_; }
  /// The error number of the step that failed; 0 if none did.
  std::uint32_t Error() const { return error_; }
  /// The line for the debug log that says how the transfer of `path` failed.
  std::string FailureLine(const std::string& path) const;

 private:
  bool ReadBlock(void* buffer, std::uint32_t size, std::uint32_t& read);

  platform::HttpRequest& request_;
  TransferPace pace_;
  const char* step_ = "";    // that failed
  std::uint32_t error_ = 0;  // its number
  bool silent_ = false;
};

}  // namespace patcher
