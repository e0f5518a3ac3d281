#include <windows.h>

#include "platform/standard_streams.h"

#include <cstdio>
#include <iostream>

#include <fcntl.h>
#include <io.h>

namespace platform {
namespace {

void WriteWhole(std::FILE* stream, std::string_view line) {
  std::string text(line);
  text += '\n';
  std::fwrite(text.data(), 1, text.size(), stream);
  std::fflush(stream);
}

}  // namespace

void UseBinaryStandardStreams() {
  for (std::FILE* stream : {stdin, stdout, stderr}) _setmode(_fileno(stream), _O_BINARY);
}

void UseConsoleOfParent() {
  const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
  const bool redirected =
      output != nullptr && output != INVALID_HANDLE_VALUE && GetFileType(output) != FILE_TYPE_UNKNOWN;
  if (redirected || !AttachConsole(ATTACH_PARENT_PROCESS)) return;
  std::freopen("CONOUT$", "wb", stdout);
}

bool ReadLine(std::string& line) {
  if (!std::getline(std::cin, line)) return false;
  if (!line.empty() && line.back() == '\r') line.pop_back();
  return true;
}

void WriteLine(std::string_view line) { WriteWhole(stdout, line); }

void WriteErrorLine(std::string_view line) { WriteWhole(stderr, line); }

}  // namespace platform
