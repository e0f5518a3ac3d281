// The program that the process and stream tests start:
//   contract_child KEY REPORT [ARGUMENT...]
// writes its own path, its working directory and the arguments to the file REPORT, a line each, then
// releases KEY on the server, and lives until "KEY-end" is released.
//   contract_child --streams
// writes each line of its input back in brackets, and at the end of the input "end" to standard error.

#include <fstream>

#include "contract/contract_server.h"
#include "platform/process.h"
#include "platform/standard_streams.h"
#include "platform/text.h"

namespace {

void EchoLines() {
  platform::UseBinaryStandardStreams();
  std::string line;
  while (platform::ReadLine(line)) platform::WriteLine("[" + line + "]");
  platform::WriteErrorLine("end");
}

void ReportAndWait(const std::vector<std::string>& arguments) {
  {
    std::ofstream report(platform::PathFromUtf8(arguments[1]), std::ios::binary);
    report << platform::Utf8FromPath(platform::OwnExecutablePath()) << '\n'
           << platform::Utf8FromPath(std::filesystem::current_path()) << '\n';
    for (std::size_t i = 2; i < arguments.size(); ++i) report << arguments[i] << '\n';
  }
  Session session;
  Get(session.connection, "/release/" + arguments[0]);
  Get(session.connection, "/late/1/" + arguments[0] + "-end");
}

}  // namespace

int main(int argc, char** argv) {
  const auto arguments = platform::CommandLineArguments(argc, argv);
  if (arguments.size() == 1 && arguments[0] == "--streams") {
    EchoLines();
    return 0;
  }
  if (arguments.size() < 2) return 2;
  ReportAndWait(arguments);
  return 0;
}
