#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "transport/http_session.h"
#include "update/progress_tracker.h"

namespace patcher {

/// The digest and size that the manifest gives for a file or an archive.
struct ExpectedFile {
  const std::string& digest;
  std::uint64_t size;
};

/// How many bytes a body may have more than its size in the manifest. Large, since sizes may be wrong and the
/// digest decides: the limit only stops a body that never ends.
inline constexpr std::uint64_t kMaxExcess = std::uint64_t{256} << 20;

/// Downloads a file in up to three attempts, until it has the expected digest. If it returns false, `reason`
/// is a text for the player about the last attempt.
[[nodiscard]] bool DownloadVerified(HttpSession& session, const std::string& path,
                                    const std::filesystem::path& destination, const ExpectedFile& expected,
                                    ProgressTracker& tracker, std::string& reason);

}  // namespace patcher
