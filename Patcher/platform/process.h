#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace platform {

/// Full path of the running executable.
std::filesystem::path OwnExecutablePath();

/// The arguments after the program's name, in UTF-8. `argc` and `argv` are those of main; Windows asks the
/// system for the wide command line instead.
std::vector<std::string> CommandLineArguments(int argc, char** argv);

/// The whole command line in UTF-8, the program's name included. `argc` and `argv` as above.
std::string CommandLineText(int argc, char** argv);

/// StartProgram's error number for a file that this system cannot run.
inline constexpr int kErrorBadExeFormat = 193;

/// After this call, writing to a pipe or a connection whose reader is gone fails instead of ending the
/// process. Windows always behaves like this. Programs that this process starts have the system's default
/// behaviour. Call it first in main.
void SurviveBrokenPipes();

/// Starts `program` and does not wait for it. Its first argument is its own path, in quotation marks on
/// Windows; `arguments` follow (none may need quoting). It inherits only the environment (and, on Linux, the
/// standard streams). Linux: a Windows program is started with `wine` if that is installed, and a native
/// program without execute permission gets it. A file that the system cannot run gives kErrorBadExeFormat.
/// Returns 0, or the system's error number.
[[nodiscard]] int StartProgram(const std::filesystem::path& program,
                               const std::vector<std::string>& arguments,
                               const std::filesystem::path& workingDirectory);

/// Opens an address in the user's browser and does not wait for it. The caller has checked the address. No
/// shell interprets it, and the browser inherits only the environment. Returns whether a program was started.
[[nodiscard]] bool OpenInBrowser(const std::u16string& url);

/// Ends the process immediately with this code. Static objects are not destroyed, because workers may still
/// be using them.
[[noreturn]] void EndProcess(int code);

}  // namespace platform
