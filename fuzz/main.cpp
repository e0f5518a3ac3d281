// The entry point of every target. Without libFuzzer, runs all files in the folders of the command line.
#include <filesystem>
#include <iostream>

#include "fuzz.h"
#include "support/scratch_directory.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  patcher::Fuzz({reinterpret_cast<const char*>(data), size});
  return 0;
}

#ifndef __clang__
int main(int argc, char** argv) {
  int count = 0;
  for (int i = 1; i < argc; ++i) {
    for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
      std::cerr << entry.path() << '\n';
      patcher::Fuzz(patcher::ReadWhole(entry.path()));
      ++count;
    }
  }
  std::cout << count << " passed\n";
  return count == 0 ? 1 : 0;
}
#endif
