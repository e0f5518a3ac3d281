#include "integrity/protected_path.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>

#include "platform/text.h"
#include "shared/own_files.h"

namespace patcher {
namespace {

/// Debug symbols, and files that are being installed or replaced.
constexpr std::string_view kProtectedExtensions[] = {".pdb", ".part", ".old", ".repack_tmp"};

}  // namespace

bool IsProtectedPath(const std::filesystem::path& path) {
  for (const std::filesystem::path& component : path) {
    // A file of such a name is protected too.
    if (HoldsName(kPlayerDirectories, platform::BytesFromPath(component))) return true;
  }
  const std::string name = platform::BytesFromPath(path.filename());
  const std::string extension = platform::BytesFromPath(path.extension());
  return HoldsName(kPlayerFiles, name) || HoldsName(kLauncherWorkFiles, name) ||
         HoldsName(kLauncherPrograms, name) ||
         std::find(std::begin(kProtectedExtensions), std::end(kProtectedExtensions), extension) !=
             std::end(kProtectedExtensions);
}

}  // namespace patcher
