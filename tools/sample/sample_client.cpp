// The game of the sample: shows how the launcher has started it, on standard output and in a file beside it.

#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

#include "platform/process.h"
#include "platform/text.h"

int main(int argc, char** argv) {
  const std::filesystem::path program = platform::OwnExecutablePath();
  std::string report = "program: " + platform::Utf8FromPath(program) + "\n";
  report += "directory: " + platform::Utf8FromPath(std::filesystem::current_path()) + "\n";
  for (const std::string& argument : platform::CommandLineArguments(argc, argv)) {
    report += "argument: " + argument + "\n";
  }
  std::cout << report;
  std::ofstream(program.parent_path() / "client_started.txt", std::ios::binary) << report;
}
