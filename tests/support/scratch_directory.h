#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

#include "shared/program.h"

namespace patcher {

/// An empty directory that is ExeDir while it lives.
class ScratchDirectory {
 public:
  ScratchDirectory()
      : path_(std::filesystem::temp_directory_path() /
              ("patcher-test-" + std::to_string(std::random_device()()))) {
    std::filesystem::create_directories(path_);
    SetExePath(path_ / "Patcher");
  }
  ~ScratchDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  ScratchDirectory(const ScratchDirectory&) = delete;
  ScratchDirectory& operator=(const ScratchDirectory&) = delete;

  std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
};

inline std::string ReadWhole(const std::filesystem::path& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

inline void WriteWhole(const std::filesystem::path& file, const std::string& text) {
  std::ofstream(file, std::ios::binary) << text;
}

}  // namespace patcher
