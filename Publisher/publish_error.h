#pragma once

#include <filesystem>
#include <stdexcept>
#include <string_view>
#include <system_error>

namespace patcher::publisher {

/// Why a publication cannot go on, as a sentence for the publisher.
class PublishError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A step failed after players already got the new manifest: the publication itself is done.
class LaterStepError : public PublishError {
 public:
  using PublishError::PublishError;
};

/// "cannot write /srv/game/x: No space left on device", for "cannot write", the file and the system's reason.
PublishError FileError(std::string_view what, const std::filesystem::path& file,
                       const std::error_code& reason);

/// An error number as the functions of the seam return it.
std::error_code SystemReason(int number);

/// Why a stream of the standard library has just failed. The caller has set errno to 0 before.
std::error_code StreamReason();

}  // namespace patcher::publisher
