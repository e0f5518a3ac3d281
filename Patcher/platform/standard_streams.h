#pragma once

#include <string>
#include <string_view>

namespace platform {

/// Standard streams as bytes: no line-end translation. Call once at start.
void UseBinaryStandardStreams();

/// For a program without a console of its own: sends output that is not redirected to the console from which
/// the program was started. Does nothing on Linux. Call before the first write.
void UseConsoleOfParent();

/// Reads the next line of standard input, without its line end (LF or CR LF). A line of more than 1 MiB is
/// cut. Returns false at the end of the input. Blocks.
[[nodiscard]] bool ReadLine(std::string& line);

/// Writes the text and a line feed to standard output in a single write. Returns false if that failed, for
/// example because a disk is full; true also if the reader has closed the pipe.
bool WriteLine(std::string_view line);

/// The same for standard error.
bool WriteErrorLine(std::string_view line);

}  // namespace platform
