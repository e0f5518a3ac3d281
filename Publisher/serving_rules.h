#pragma once

#include <string_view>

namespace patcher::publisher {

/// The headers that a web server must send with a file.
struct ServingRule {
  std::string_view contentType;
  std::string_view cacheControl;
};

inline constexpr ServingRule kManifestRule{"application/json", "no-store"};
/// For every file with a digest in its name.
inline constexpr ServingRule kContentRule{"application/octet-stream", "public, max-age=31536000, immutable"};

/// Whether a Cache-Control header forbids caches to store the response.
[[nodiscard]] bool ForbidsCaching(std::string_view cacheControl);

/// Whether a Cache-Control header allows every cache to use the response for at least a day without a new
/// request.
[[nodiscard]] bool AllowsLongCaching(std::string_view cacheControl);

}  // namespace patcher::publisher
