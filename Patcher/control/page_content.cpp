#include "control/page_content.h"

#include <algorithm>

#include "platform/resources.h"
#include "platform/text.h"

namespace patcher {
namespace {

/// Images are part of the program, so they change only with it.
constexpr std::string_view kCacheForAYear = "Cache-Control: max-age=31536000";

}  // namespace

const Asset* FindAsset(std::string_view address) {
  const std::string_view path = address.substr(0, address.find_first_of("?#"));
  const std::string_view name = path.substr(path.rfind('/') + 1);
  const auto row = std::ranges::find(AssetTable, name, &Asset::name);
  return row != std::end(AssetTable) ? row : nullptr;
}

std::optional<platform::ResourceAnswer> ServeAsset(std::string_view address) {
  const Asset* asset = FindAsset(address);
  if (asset == nullptr) return std::nullopt;
  const std::span<const std::byte> content = platform::EmbeddedResource(asset->resource);
  if (content.empty()) return std::nullopt;
  const std::string mediaType(asset->mediaType);
  return platform::ResourceAnswer{content, mediaType,
                                  "Content-Type: " + mediaType + "\r\n" + std::string(kCacheForAYear)};
}

std::u16string PageText() {
  const std::span<const std::byte> page = platform::EmbeddedResource(kPageResource);
  return platform::Utf8ToWide({reinterpret_cast<const char*>(page.data()), page.size()});
}

bool IsOwnAddress(std::string_view address) {
  return address.starts_with("about:") || address.starts_with("data:");
}

}  // namespace patcher
