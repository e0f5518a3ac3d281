#pragma once

#include <string>
#include <string_view>

namespace platform {

/// Standard streams as bytes: no line-end translation. Call once at start.
void UseBinaryStandardStreams();

/// For a program that has no console of its own: output that is not redirected goes to the console from which
/// the program was started. Nothing to do on Linux. Call before the first write.
void UseConsoleOfParent();

/// Next line of standard input without its line end (LF or CR LF). False at the end of the input. Blocks.
[[nodiscard]] bool ReadLine(std::string& line);

/// Writes the text and a line feed to standard output at once, as one write.
void WriteLine(std::string_view line);

/// The same for standard error.
void WriteErrorLine(std::string_view line);

}  // namespace platform
