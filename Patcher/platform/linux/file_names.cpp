#include "platform/file_names.h"

namespace platform {

std::string FileIdentity(std::string_view path) {
  std::string identity;
  identity.reserve(path.size());
  while (!path.empty()) {
    const std::size_t end = path.find('/');
    const std::string_view component = path.substr(0, end);
    if (!component.empty() && component != ".") {
      if (!identity.empty()) identity += '/';
      identity += component;
    }
    path = end == std::string_view::npos ? std::string_view() : path.substr(end + 1);
  }
  return identity;
}

bool NamesAFile(std::string_view) { return true; }

}  // namespace platform
