#include "integrity/damaged_files.h"

#include <cstdint>
#include <exception>
#include <filesystem>
#include <system_error>

#include "platform/links.h"
#include "platform/text.h"
#include "shared/program.h"
#include "update/local_manifest.h"
#include "update/manifest_paths.h"

namespace patcher {
namespace {

namespace fs = std::filesystem;

/// Whether the way from the install directory to the place leads through a link. The download replaces a file
/// there as it does anywhere, so nothing is lost by leaving it alone.
bool IsBehindLink(const fs::path& relative) {
  fs::path place = ExeDir();
  for (const fs::path& component : relative.parent_path()) {
    place /= component;
    if (platform::IsLink(place)) return true;
  }
  return false;
}

void DeleteListedFile(const std::string& path) {
  try {
    if (!StaysInside(path)) return;
    const fs::path relative = platform::PathFromBytes(path);
    if (IsBehindLink(relative)) return;
    const fs::path place = ExeDir() / relative;
    std::error_code ignored;
    // A player whose fetch fails must still have a launcher; a new one replaces it in one step.
    if (fs::equivalent(place, ExePath(), ignored)) return;
    fs::remove(place, ignored);
  } catch (const std::exception&) {
    // A name that the system cannot express: no file has it.
  }
}

}  // namespace

void DiscardDamagedFiles(const std::vector<std::string>& paths) {
  const fs::path manifest = ExeDir() / "patch_manifest.json";
  std::int32_t version = 0;
  LocalState state = LoadLocalManifest(manifest, &version);
  for (const std::string& path : paths) {
    DeleteListedFile(path);
    state.erase(path);
  }
  SaveLocalManifest(manifest, state, version);
}

}  // namespace patcher
