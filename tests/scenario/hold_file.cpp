// Holds a file open, as a running game does while its launcher updates:
//   hold_file [FILE [SHARING]]
// Prints "holding" and lives until its input ends. Without FILE it only runs, which holds its own program.
// SHARING says what others may do with the file: any of the letters r (read), w (write) and d (move or
// delete). Windows only: elsewhere no file can be held so.

#include <windows.h>

#include <string>

#include "platform/process.h"
#include "platform/standard_streams.h"
#include "platform/text.h"

namespace {

bool Hold(const std::filesystem::path& file, const std::string& sharing) {
  const auto allows = [&](char letter, DWORD flag) {
    return sharing.find(letter) != std::string::npos ? flag : 0u;
  };
  const DWORD flags =
      allows('r', FILE_SHARE_READ) | allows('w', FILE_SHARE_WRITE) | allows('d', FILE_SHARE_DELETE);
  return CreateFileW(file.c_str(), GENERIC_READ, flags, nullptr, OPEN_EXISTING, 0, nullptr) !=
         INVALID_HANDLE_VALUE;
}

}  // namespace

int main(int argc, char** argv) {
  platform::UseBinaryStandardStreams();
  const auto arguments = platform::CommandLineArguments(argc, argv);
  const std::string sharing = arguments.size() > 1 ? arguments[1] : "";
  if (!arguments.empty() && !Hold(platform::PathFromUtf8(arguments[0]), sharing)) return 1;
  platform::WriteLine("holding");
  std::string line;
  while (platform::ReadLine(line)) {
  }
}
