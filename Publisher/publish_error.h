#pragma once

#include <filesystem>
#include <stdexcept>
#include <string_view>
#include <system_error>

namespace patcher::publisher {

/// Why a task failed, as a sentence for the publisher.
class PublishError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A document is not a valid manifest.
class ManifestError : public PublishError {
 public:
  using PublishError::PublishError;
};

/// A step failed after the new version was published. The publication itself is complete.
class LaterStepError : public PublishError {
 public:
  using PublishError::PublishError;
};

/// An error with the text "cannot write /srv/game/x: No space left on device", from "cannot write", the file
/// and the system's reason.
[[nodiscard]] PublishError FileError(std::string_view what, const std::filesystem::path& file,
                                     const std::error_code& reason);

/// The reason for an error number that a function of Patcher/platform has returned.
[[nodiscard]] std::error_code SystemReason(int number);

/// Why the last operation of a standard stream failed. The caller must set errno to 0 before that operation.
[[nodiscard]] std::error_code StreamReason();

}  // namespace patcher::publisher
