#include "integrity/protected_path.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>

#include "integrity/normal_form.h"
#include "platform/text.h"

namespace patcher {
namespace {

/// Logs, captures, saved accounts, and what the game keeps of the player's choices. A file of such a name
/// counts too.
constexpr std::string_view kProtectedComponents[] = {"log",          "webview2data", "capture",
                                                     "useraccounts", "powerups",     "farmdisplay"};
constexpr std::string_view kPlayerFiles[] = {"reginfo.dat", "ostu.ini"};
constexpr std::string_view kLauncherFiles[] = {"patcher.exe",       "patcher.ini",     "patch_manifest.json",
                                               "patcher.old.exe",   "patcher.new.exe", "patcher_debug.txt",
                                               "webview2loader.dll"};
/// Debug symbols; files on their way in or out.
constexpr std::string_view kProtectedExtensions[] = {".pdb", ".part", ".old", ".repack_tmp"};

template <std::size_t Size>
bool Contains(const std::string_view (&names)[Size], std::string_view name) {
  return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

}  // namespace

bool IsProtectedPath(const std::filesystem::path& path) {
  for (const std::filesystem::path& component : path) {
    if (Contains(kProtectedComponents, NormalForm(platform::BytesFromPath(component)))) return true;
  }
  const std::string name = NormalForm(platform::BytesFromPath(path.filename()));
  return Contains(kPlayerFiles, name) || Contains(kLauncherFiles, name) ||
         Contains(kProtectedExtensions, platform::BytesFromPath(path.extension()));
}

}  // namespace patcher
