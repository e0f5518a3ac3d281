#pragma once

#include <string>
#include <vector>

/// The line to the test that drives the stand-in: a loopback connection to the port in the environment variable
/// WEB_VIEW_STAND_IN_PORT. A line is a list of fields in UTF-8 with tabs between them; tab, line ends and backslash
/// inside a field are written \t, \n, \r and \\. An absent string is "(null)".
using Line = std::vector<std::string>;

/// False if nobody listens. Lines that arrive are handed to `post` on a thread of the connection's own.
bool ConnectToDriver(void (*post)(Line* line));

/// Any thread.
void TellDriver(const Line& line);

std::string Narrow(const wchar_t* text);
std::wstring Wide(const std::string& text);
