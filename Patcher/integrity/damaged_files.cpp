#include "integrity/damaged_files.h"

#include <exception>
#include <filesystem>
#include <system_error>

#include "integrity/behind_link.h"
#include "platform/text.h"
#include "shared/program.h"
#include "update/local_record.h"
#include "update/manifest_paths.h"

namespace patcher {
namespace {

namespace fs = std::filesystem;

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
  LocalRecord record(ExeDir() / "patch_manifest.json");
  record.Load();
  for (const std::string& path : paths) record.Forget(path);
  // First: a death in between must not leave a record that names deleted files.
  if (!record.Save()) return;
  for (const std::string& path : paths) DeleteListedFile(path);
}

}  // namespace patcher
