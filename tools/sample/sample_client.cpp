// The sample game: prints how the launcher started it, and writes the same to a file in its folder.

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
