#pragma once

#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

namespace patcher {

/// Makes a link to a directory that stands beside it, by what the system offers: a symbolic link; a junction,
/// where the standard library makes no links; under Wine, which makes neither, a link of the system below it.
/// False if all of that fails.
inline bool LinkToDirectoryBeside(const std::filesystem::path& link, const std::filesystem::path& target) {
  std::error_code error;
  std::filesystem::create_directory_symlink(target.filename(), link, error);
  if (!error) return true;
  const std::string place = link.generic_string();
  if (const char* prefix = std::getenv("WINEPREFIX")) {
    const std::string drive(1, static_cast<char>(std::tolower(static_cast<unsigned char>(place[0]))));
    const std::string below = std::string(prefix) + "/dosdevices/" + drive + place.substr(1);
    if (std::system(("start /wait /unix /bin/ln -s " + target.filename().string() + " " + below).c_str()) !=
        0)
      return false;
  } else if (std::system(("mklink /J \"" + link.string() + "\" \"" + target.string() + "\" >nul").c_str()) !=
             0) {
    return false;
  }
  return std::filesystem::exists(link);
}

}  // namespace patcher
