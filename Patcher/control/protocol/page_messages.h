#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "control/protocol/ui_event.h"

namespace patcher {

// The texts that go to the page: one JSON object each, built in a fixed member order without white space.
// Inputs are UTF-8.

/// Escapes quotes, backslashes and line feeds, for the launcher's own sentences and file names.
std::u16string EscapeLight(std::string_view text);
/// Escapes everything that JSON wants escaped, for documents of the site.
std::u16string EscapeFull(std::string_view text);

std::u16string BuildStatusMessage(std::string_view text);
/// Backslashes of `currentFile` become slashes.
std::u16string BuildProgressMessage(const ProgressReport& report);
std::u16string BuildVersionsMessage(std::int32_t current, std::int32_t latest);
std::u16string BuildReadyMessage(bool canPlay);
std::u16string BuildServerMessage(bool online);
std::u16string BuildWindowMessage(bool maximized);
std::u16string BuildOptionsSavedMessage(bool ok);

/// The published news document, whole and unparsed.
std::u16string BuildNewsMessage(std::string_view body);
std::u16string BuildNewsFailedMessage();

/// Outcome of a verification.
struct CheckResult {
  std::int32_t total = 0;
  std::int32_t ok = 0;
  std::int32_t missing = 0;
  std::int32_t corrupt = 0;
  std::uint64_t bytes = 0;           ///< what a repair has to fetch
  std::vector<std::string> samples;  ///< every missing or damaged path, ascending by bytes
  /// Those of them whose file could not be examined: what it holds is unknown. Not part of the message.
  std::vector<std::string> unproven = {};
};

/// Paths of CheckResult::samples that a check message carries.
inline constexpr std::size_t kMaxCheckSamples = 40;

/// `mode` is "verify" or "repair". Narrow, for PostNarrowJson.
std::string BuildCheckMessage(std::string_view mode, const CheckResult& result);
std::string BuildCheckErrorMessage(std::string_view mode, std::string_view error);

}  // namespace patcher
