#include "publish_error.h"

#include <cerrno>
#include <string>

#include "platform/text.h"

namespace patcher::publisher {

PublishError FileError(std::string_view what, const std::filesystem::path& file,
                       const std::error_code& reason) {
  return PublishError(std::string(what) + " " + platform::Utf8FromPath(file) + ": " + reason.message());
}

std::error_code SystemReason(int number) { return {number, std::system_category()}; }

std::error_code StreamReason() { return {errno != 0 ? errno : EIO, std::generic_category()}; }

}  // namespace patcher::publisher
