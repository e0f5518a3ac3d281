#include "is_below.h"

#include <system_error>

namespace patcher::publisher {

namespace fs = std::filesystem;

bool IsBelow(const fs::path& inner, const fs::path& outer) {
  std::error_code error;
  fs::path folder = fs::weakly_canonical(fs::absolute(inner), error);
  for (;;) {
    if (fs::equivalent(folder, outer, error) && !error) return true;
    if (!folder.has_relative_path()) return false;
    folder = folder.parent_path();
  }
}

}  // namespace patcher::publisher
