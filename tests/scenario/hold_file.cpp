// Holds a file open for itself alone, as a game does that runs while its launcher updates:
//   hold_file [FILE]
// Says "holding" and lives until its input ends. Without FILE it only runs, which holds its own program.
// Windows only: elsewhere no file can be held so.

#include <cstdio>
#include <string>

#include <share.h>

#include "platform/process.h"
#include "platform/standard_streams.h"
#include "platform/text.h"

int main(int argc, char** argv) {
  platform::UseBinaryStandardStreams();
  const auto arguments = platform::CommandLineArguments(argc, argv);
  if (!arguments.empty() &&
      _wfsopen(platform::PathFromUtf8(arguments[0]).c_str(), L"rb", _SH_DENYRW) == nullptr) {
    return 1;
  }
  platform::WriteLine("holding");
  std::string line;
  while (platform::ReadLine(line)) {
  }
}
