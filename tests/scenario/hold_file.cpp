// Holds a file open, as a running game does while its launcher updates:
//   hold_file [FILE [SHARING]]
// Prints "holding" and lives until its input ends. Without FILE it only runs, which holds its own program.
// SHARING is a number, the FILE_SHARE_ flags for others. Windows only: other systems cannot lock files this
// way.

#include <windows.h>

#include <string>

#include "platform/process.h"
#include "platform/standard_streams.h"
#include "platform/text.h"

int main(int argc, char** argv) {
  platform::UseBinaryStandardStreams();
  const auto arguments = platform::CommandLineArguments(argc, argv);
  if (!arguments.empty()) {
    const DWORD sharing = arguments.size() > 1 ? std::stoul(arguments[1]) : 0;
    const HANDLE file = CreateFileW(platform::PathFromUtf8(arguments[0]).c_str(), GENERIC_READ, sharing,
                                    nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) return 1;
  }
  platform::WriteLine("holding");
  std::string line;
  while (platform::ReadLine(line)) {
  }
}
