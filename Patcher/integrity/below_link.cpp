#include "integrity/below_link.h"

#include "platform/links.h"
#include "shared/program.h"

namespace patcher {

bool IsBelowLink(const std::filesystem::path& relative) {
  std::filesystem::path place = ExeDir();
  for (const std::filesystem::path& component : relative.parent_path()) {
    place /= component;
    if (platform::IsLink(place)) return true;
  }
  return false;
}

}  // namespace patcher
