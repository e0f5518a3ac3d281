#include <windows.h>

#include "platform/standard_streams.h"

#include <cstdio>
#include <iostream>

#include <fcntl.h>
#include <io.h>

namespace platform {
namespace {

bool WriteWhole(std::FILE* stream, std::string_view line) {
  std::string text(line);
  text += '\n';
  const bool written =
      std::fwrite(text.data(), 1, text.size(), stream) == text.size() && std::fflush(stream) == 0;
  // Then the reader has closed the pipe.
  return written || GetFileType(reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)))) == FILE_TYPE_PIPE;
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

bool WriteLine(std::string_view line) { return WriteWhole(stdout, line); }

bool WriteErrorLine(std::string_view line) { return WriteWhole(stderr, line); }

}  // namespace platform
