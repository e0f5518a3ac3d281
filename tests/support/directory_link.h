#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

namespace patcher {

/// Makes a link to a directory that stands beside it, by what the system offers: a symbolic link, a junction
/// where the standard library has none, or, under Wine, a link of the system below it. False if all of that
/// fails.
inline bool LinkToDirectoryBeside(const std::filesystem::path& link, const std::filesystem::path& target) {
  std::error_code error;
  std::filesystem::create_directory_symlink(target.filename(), link, error);
  if (!error) return true;
  const std::string beside = "cd /d \"" + link.parent_path().string() + "\" && ";
  const std::string names = "\"" + link.filename().string() + "\" \"" + target.filename().string() + "\"";
  if (std::system((beside + "mklink /J " + names + " >nul 2>nul").c_str()) == 0 &&
      std::filesystem::exists(link))
    return true;
  std::system(
      (beside + "start /wait /unix /bin/ln -s " + target.filename().string() + " " + link.filename().string())
          .c_str());
  return std::filesystem::exists(link);
}

}  // namespace patcher
