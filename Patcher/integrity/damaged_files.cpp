#include "integrity/damaged_files.h"

#include <exception>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <unordered_set>

#include "integrity/below_link.h"
#include "platform/text.h"
#include "shared/own_files.h"
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
    if (IsBelowLink(relative)) return;
    const fs::path place = ExeDir() / relative;
    std::error_code ignored;
    // The player must keep a launcher if the download fails. A new one replaces it in one step.
    if (fs::equivalent(place, ExePath(), ignored)) return;
    fs::remove(place, ignored);
  } catch (const std::exception&) {
    // The system cannot represent this name, so no file has it.
  }
}

}  // namespace

bool DiscardDamagedFiles(const CheckResult& result) {
  LocalRecord record(ExeDir() / kRecordFile);
  record.Load();
  for (const std::string& path : result.samples) record.Forget(path);
  // Saved before any file is deleted: after a crash the record must not name deleted files.
  if (!record.SaveOrRemove()) return false;
  const std::unordered_set<std::string_view> unexamined(result.unexamined.begin(), result.unexamined.end());
  for (const std::string& path : result.samples) {
    if (unexamined.count(path) == 0) DeleteListedFile(path);
  }
  return true;
}

}  // namespace patcher
