#include <filesystem>
#include <string>
#include <utility>

#include "control/wiring.h"
#include "platform/process.h"
#include "platform/standard_streams.h"
#include "platform/text.h"
#include "shared/program.h"
#include "stdio_host.h"
#include "transport/config.h"
#include "update/self_update.h"

namespace {

constexpr char kHelp[] =
    R"(patcher-stdio - the launcher on standard input and output instead of a window

Usage: patcher-stdio [--readable]
       patcher-stdio --print-version | --help

Updates the directory that contains this program; patcher.ini in it names the server.
Reads requests from standard input, one JSON object per line, for example
{"action":"play"}, and writes messages to standard output, one JSON object per line.
A request is refused while an update, a verification or a repair runs, so wait for
"ready" before "play", "verify" and "repair". At the end of the input it finishes
the running work and exits. For example,

    patcher-stdio </dev/null

runs one unattended update. The last message of type "ready" has the result. After a
self-update the new program continues with the same output, and this one exits.

  --readable       print messages as readable lines instead of JSON
  --print-version  print the launcher's build number
  --help           print this text

Actions and their members:

  play                  start the game and exit, if the last "ready" allows it
  cancel                exit immediately
  verify                compare every file with the server's manifest
  repair                download files that are missing or damaged
  getNews               download the site's news
  openUrl "url"         open a link of the site in the browser
  windowDrag            print a line
  windowMinimize        print a line
  windowMaximize        print a line
  windowClose           print a line and exit
  getOptions            read the game's settings
  saveOptions "values"  change them

Exit codes: 0 success, 2 wrong usage, 3 no thread could be started.)";

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
  patcher::OperationTable operations = patcher::LauncherOperations(PrintError);
  operations.selfUpdateSwap = [arguments = platform::CommandLineArguments(argc, argv)] {
    patcher::SelfUpdateSwap(PrintError, [&](const std::filesystem::path& launcher) {
      return platform::StartProgram(launcher, arguments, patcher::ExeDir());
    });
  };
  // Never destroyed, because workers may outlive the message loop.
  auto* host = new Host(options.readable ? Host::Form::kReadable : Host::Form::kJson, std::move(operations));
  platform::EndProcess(host->Run());
}
