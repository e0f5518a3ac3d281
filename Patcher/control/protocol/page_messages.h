#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "control/protocol/ui_event.h"

namespace patcher {

// The messages for the page. Each is one JSON object with a fixed member order and no white space. Inputs are
// UTF-8.

/// Escapes quotes, backslashes and line feeds. For the launcher's own sentences and file names.
std::u16string EscapeLight(std::string_view text);
/// Escapes every character that JSON requires to be escaped. For documents of the site.
std::u16string EscapeFull(std::string_view text);

std::u16string BuildStatusMessage(std::string_view text);
/// Replaces backslashes in `currentFile` by slashes.
std::u16string BuildProgressMessage(const ProgressReport& report);
std::u16string BuildVersionsMessage(std::int32_t current, std::int32_t latest);
std::u16string BuildReadyMessage(bool canPlay);
std::u16string BuildServerMessage(bool online);
std::u16string BuildWindowMessage(bool maximized);
std::u16string BuildOptionsSavedMessage(bool ok);

/// Contains the published news document unchanged.
std::u16string BuildNewsMessage(std::string_view body);
std::u16string BuildNewsFailedMessage();

/// The outcome of a verification.
struct CheckResult {
  std::int32_t total = 0;
  std::int32_t ok = 0;
  std::int32_t missing = 0;
  std::int32_t corrupt = 0;
  std::uint64_t bytes = 0;           ///< that a repair has to download
  std::vector<std::string> samples;  ///< every missing or damaged path, sorted by bytes
  /// The paths among `samples` whose files could not be examined, so their content is unknown. Not part of
  /// the message.
  std::vector<std::string> unexamined = {};
};

/// The most paths of CheckResult::samples that a check message contains.
inline constexpr std::size_t kMaxCheckSamples = 40;

/// `mode` is "verify" or "repair". UTF-8, for PostNarrowJson.
std::string BuildCheckMessage(std::string_view mode, const CheckResult& result);
std::string BuildCheckErrorMessage(std::string_view mode, std::string_view error);

}  // namespace patcher
