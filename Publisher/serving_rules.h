#pragma once

#include <string_view>

namespace patcher::publisher {

/// The headers with which a web server sends a file.
struct ServingRule {
  std::string_view contentType;
  std::string_view cacheControl;
};

inline constexpr ServingRule kManifestRule{"application/json", "no-store"};
/// Of everything with a digest in its name.
inline constexpr ServingRule kContentRule{"application/octet-stream", "public, max-age=31536000, immutable"};

/// Whether a Cache-Control header keeps caches from storing the response.
bool ForbidsCaching(std::string_view cacheControl);

/// Whether a Cache-Control header lets every cache keep the response for a day at least, without asking
/// again.
bool AllowsLongCaching(std::string_view cacheControl);

}  // namespace patcher::publisher
