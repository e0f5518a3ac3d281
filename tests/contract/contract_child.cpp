// The program that the process and stream tests start:
//   contract_child REPORT ARGUMENT
// writes its own path, its working directory and the argument to the file REPORT, a line each, then an empty
// line.
//   contract_child --streams
// writes each line of its input back in brackets, and at the end of the input "end" to standard error, and
// ends with 7.

#include <fstream>

#include "platform/process.h"
#include "platform/standard_streams.h"
#include "platform/text.h"

namespace {

/// Static objects must still be there when EndProcess ends the process.
const struct Lasting {
  ~Lasting() { platform::WriteErrorLine("destroyed"); }
} kLasting;

void EchoLines() {
  platform::UseBinaryStandardStreams();
  std::string line;
  while (platform::ReadLine(line)) platform::WriteLine("[" + line + "]");
  platform::WriteErrorLine("end");
}

void Report(const std::vector<std::string>& arguments) {
  std::ofstream report(platform::PathFromUtf8(arguments[0]), std::ios::binary);
  report << platform::Utf8FromPath(platform::OwnExecutablePath()) << '\n'
         << platform::Utf8FromPath(std::filesystem::current_path()) << '\n'
         << arguments[1] << "\n\n";
}

}  // namespace

int main(int argc, char** argv) {
  const auto arguments = platform::CommandLineArguments(argc, argv);
  const bool echoes = arguments.size() < 2;
  echoes ? EchoLines() : Report(arguments);
  platform::EndProcess(echoes ? 7 : 0);
}
