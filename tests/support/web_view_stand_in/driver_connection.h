#pragma once

#include <string>
#include <vector>

/// The line to the test that drives the stand-in: a loopback connection to the port in the environment
/// variable WEB_VIEW_STAND_IN_PORT. A line is a list of fields in UTF-8, with the control character 1F
/// between them and 1E at its end, which stand in no field.
using Line = std::vector<std::string>;

/// Lines that arrive are handed to `post` on a thread of the connection's own. The process ends with the
/// connection: a test that is over leaves no window behind.
void ConnectToDriver(void (*post)(Line* line));

/// Main thread only.
void TellDriver(const Line& line);

std::string Narrow(const wchar_t* text);  // "(null)" if there is none
std::wstring Wide(const std::string& text);
