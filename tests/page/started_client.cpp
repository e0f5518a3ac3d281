// A game client for the tests with the Windows program: leaves its argument in the file "started" in its
// working directory.

#include <cstdio>
#include <fstream>

int main(int argc, char** argv) {
  std::ofstream("starting", std::ios::binary) << (argc > 1 ? argv[1] : "") << '\n';
  return std::rename("starting", "started");
}
