#include <string>

#include "control/wiring.h"
#include "platform/process.h"
#include "platform/standard_streams.h"
#include "platform/text.h"
#include "shared/program.h"
#include "stdio_host.h"
#include "transport/config.h"

namespace {

constexpr char kHelp[] =
    R"(patcher-stdio - the launcher with its page replaced by standard input and output

Usage: patcher-stdio [--readable]
       patcher-stdio --print-version | --help

Brings the program's own directory up to date, as patcher.ini in it says. Requests
are read from standard input, one JSON object a line, for example {"action":"play"};
messages are written to standard output, one JSON object a line. At the end of the
input the program ends as soon as nothing is running, so that

    patcher-stdio </dev/null

is one unattended update. Its outcome is the last message of type "ready".

  --readable       messages as lines for people instead of JSON
  --print-version  print the launcher's build number
  --help           print this text

Actions, with their further members:

  play                  start the game and end, if the last "ready" allows it
  cancel                end at once
  verify                compare every file with the server's manifest
  repair                fetch what a verification finds missing or damaged
  getNews               fetch the site's news
  openUrl "url"         open a link of the site in the browser
  windowDrag            print a line; only the window moves
  windowMinimize        print a line
  windowMaximize        print a line
  windowClose           print a line and end
  getOptions            read the game's settings
  saveOptions "values"  change them

Exit codes: 0 the session ended, 2 wrong usage, 3 no thread could be started.)";

constexpr int kExitUsage = 2;

struct Options {
  bool readable = false;
  bool help = false;
  bool printVersion = false;
  std::string unknown;
};

Options ReadOptions(int argc, char** argv) {
  Options options;
  for (const std::string& argument : platform::CommandLineArguments(argc, argv)) {
    if (argument == "--readable") {
      options.readable = true;
    } else if (argument == "--help") {
      options.help = true;
    } else if (argument.find("--print-version") != std::string::npos) {
      options.printVersion = true;
    } else {
      options.unknown = argument;
    }
  }
  return options;
}

void PrintError(const std::u16string& text, const std::u16string& title) {
  platform::WriteErrorLine("error box: " + platform::WideToUtf8(title) + ": " + platform::WideToUtf8(text));
}

}  // namespace

int main(int argc, char** argv) {
  platform::SurviveBrokenPipes();
  platform::UseBinaryStandardStreams();
  const Options options = ReadOptions(argc, argv);
  if (options.printVersion) {
    platform::WriteLine(std::to_string(patcher::launcherBuild));
    return 0;
  }
  if (options.help) {
    platform::WriteLine(kHelp);
    return 0;
  }
  if (!options.unknown.empty()) {
    platform::WriteErrorLine("patcher-stdio: unknown argument '" + options.unknown + "'; see --help");
    return kExitUsage;
  }

  patcher::SetExePath(platform::OwnExecutablePath());
  patcher::PatchConfig::Load();
  using Host = patcher::StdioHost;
  // Never destroyed: workers may outlive the message loop.
  auto* host = new Host(options.readable ? Host::Form::kReadable : Host::Form::kJson,
                        patcher::LauncherOperations(PrintError));
  platform::EndProcess(host->Run());
}
