#pragma once

#include <cctype>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>
#include <thread>

namespace patcher {

/// A link to a directory, by what the system offers: a symbolic link; a junction, where the standard library
/// makes no links; under Wine, which makes neither, a link of the system below it. Ends with this object,
/// since not every remove_all gets past a link.
class DirectoryLink {
 public:
  DirectoryLink(std::filesystem::path link, const std::filesystem::path& target) : link_(std::move(link)) {
    std::error_code error;
    const std::filesystem::path way = target.lexically_relative(link_.parent_path());
    std::filesystem::create_directory_symlink(way, link_, error);
    if (!error) return;
    if (std::getenv("WINEPREFIX") != nullptr) {
      Run("start /unix /bin/ln -s " + way.generic_string() + " " + PathBelowWine());
      WaitUntilItIsThere(true);
    } else {
      Run("mklink /J \"" + link_.string() + "\" \"" + target.string() + "\" >nul");
    }
  }
  ~DirectoryLink() {
    std::error_code error;
    std::filesystem::remove(link_, error);
    if (error && std::getenv("WINEPREFIX") != nullptr) {
      Run("start /unix /bin/rm -f " + PathBelowWine());
      WaitUntilItIsThere(false);
    }
  }
  DirectoryLink(const DirectoryLink&) = delete;
  DirectoryLink& operator=(const DirectoryLink&) = delete;

  bool IsThere() const { return std::filesystem::exists(link_); }

 private:
  static void Run(const std::string& command) {
    if (std::system(command.c_str()) != 0) std::perror(command.c_str());
  }

  /// Wine does not report when a program of the system below it has ended.
  void WaitUntilItIsThere(bool wanted) const {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (IsThere() != wanted && std::chrono::steady_clock::now() < limit) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  }

  std::string PathBelowWine() const {
    const std::string place = link_.generic_string();
    const std::string drive(1, static_cast<char>(std::tolower(static_cast<unsigned char>(place[0]))));
    const char* const prefix = std::getenv("WINEPREFIX");
    return std::string(prefix != nullptr ? prefix : "") + "/dosdevices/" + drive + place.substr(1);
  }

  std::filesystem::path link_;
};

}  // namespace patcher
