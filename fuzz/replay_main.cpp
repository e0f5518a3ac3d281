// Runs a target on the files of the folders that it is given.
#include <algorithm>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "fuzz.h"
#include "support/scratch_directory.h"

int main(int argc, char** argv) {
  std::vector<std::filesystem::path> files;
  for (int i = 1; i < argc; ++i) {
    for (const auto& entry : std::filesystem::directory_iterator(argv[i])) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  for (const auto& file : files) {
    std::cerr << file << '\n';
    const std::string text = patcher::ReadWhole(file);
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
  }
  std::cout << files.size() << " passed\n";
  return files.empty() ? 1 : 0;
}
