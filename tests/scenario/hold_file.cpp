// hold-file FILE: opens FILE for reading, writes a line and keeps it open until standard input ends. On
// Windows the file can then neither be moved nor deleted, since the C runtime does not share that.
#include <fstream>
#include <iostream>
#include <string>

int main(int argc, char** argv) {
  std::ifstream file(argc > 1 ? argv[1] : "", std::ios::binary);
  std::cout << (file ? "held" : "cannot open") << std::endl;
  for (std::string line; std::getline(std::cin, line);) {
  }
  return file ? 0 : 1;
}
