// The program that the process and stream tests start:
//   contract_child KEY REPORT [ARGUMENT...]
// writes its own path, its working directory and the arguments to the file REPORT, a line each, then
// releases KEY on the server.
//   contract_child --streams
// writes each line of its input back in brackets, and at the end of the input "end" to standard error, and
// ends with 7.

#include <fstream>

#include "contract/contract_server.h"
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
  {
    std::ofstream report(platform::PathFromUtf8(arguments[1]), std::ios::binary);
    report << platform::Utf8FromPath(platform::OwnExecutablePath()) << '\n'
           << platform::Utf8FromPath(std::filesystem::current_path()) << '\n';
    for (std::size_t i = 2; i < arguments.size(); ++i) report << arguments[i] << '\n';
  }
  Session session;
  Get(session.connection, "/release/" + arguments[0]);
}

}  // namespace

int main(int argc, char** argv) {
  const auto arguments = platform::CommandLineArguments(argc, argv);
  const bool echoes = arguments.size() < 2;
  echoes ? EchoLines() : Report(arguments);
  platform::EndProcess(echoes ? 7 : 0);
}
