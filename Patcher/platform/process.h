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

/// StartProgram's error number for a file that is no program for this system.
inline constexpr int kErrorBadExeFormat = 193;

/// From now on a write to a pipe or a connection whose reader is gone fails instead of ending the process.
/// Windows does that anyway. Programs that are started have the system's usual behaviour. Call first in main.
void SurviveBrokenPipes();

/// Starts `program` and does not wait for it. Its first argument is its own path, in quotation marks on
/// Windows; `arguments` follow (none may need quoting). Nothing is inherited but the environment (and, on
/// Linux, the standard streams). On Linux a file that is a Windows program is started through `wine` if the
/// system has it, and a native program is given the permission to run if it lacks it; a file that is no
/// program for the system gives kErrorBadExeFormat. Returns 0, or the system's error number.
[[nodiscard]] int StartProgram(const std::filesystem::path& program,
                               const std::vector<std::string>& arguments,
                               const std::filesystem::path& workingDirectory);

/// Opens an address in the user's browser and does not wait for it. The caller has checked the address. No
/// shell reads it, and nothing is inherited but the environment.
/// Returns whether something was started.
[[nodiscard]] bool OpenInBrowser(const std::u16string& url);

/// Ends the process at once with this code: no static object is destroyed, so that workers that are still
/// running can use them. Standard streams are flushed first.
[[noreturn]] void EndProcess(int code);

}  // namespace platform
