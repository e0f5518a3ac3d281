// Holds a file open for itself alone, as a game does that runs while its launcher updates:
//   hold_file [FILE [--shared]]
// Says "holding" and lives until its input ends. Without FILE it only runs, which holds its own program.
// Shared, others may read and write the file, but neither move nor delete it. Windows only: elsewhere no file
// can be held so.

#include <cstdio>
#include <string>

#include <share.h>

#include "platform/process.h"
#include "platform/standard_streams.h"
#include "platform/text.h"

int main(int argc, char** argv) {
  platform::UseBinaryStandardStreams();
  const auto arguments = platform::CommandLineArguments(argc, argv);
  const int sharing = arguments.size() > 1 ? _SH_DENYNO : _SH_DENYRW;
  if (!arguments.empty() &&
      _wfsopen(platform::PathFromUtf8(arguments[0]).c_str(), L"rb", sharing) == nullptr) {
    return 1;
  }
  platform::WriteLine("holding");
  std::string line;
  while (platform::ReadLine(line)) {
  }
}
