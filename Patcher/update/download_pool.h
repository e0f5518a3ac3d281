#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "shared/parallel_run.h"
#include "transport/http_session.h"
#include "update/progress_tracker.h"

namespace patcher {

/// A file or archive as the manifest describes it.
struct ExpectedFile {
  const std::string& digest;
  std::uint64_t size;
};

/// Bytes that a body may have above its size in the manifest. Generous, since the digest decides and sizes
/// may be wrong: this only ends a body that does not end by itself.
inline constexpr std::uint64_t kMaxExcess = std::uint64_t{256} << 20;

/// Downloads one file with up to three attempts, until it has the expected digest. On false `reason` says in
/// the player's words how the last attempt failed.
[[nodiscard]] bool DownloadVerified(HttpSession& session, const std::string& path,
                                    const std::filesystem::path& destination, const ExpectedFile& expected,
                                    ProgressTracker& tracker, std::string& reason);

}  // namespace patcher
