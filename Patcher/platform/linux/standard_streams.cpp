#include "platform/standard_streams.h"

#include <cerrno>
#include <iostream>

#include <unistd.h>

namespace platform {
namespace {

bool WriteWhole(int descriptor, std::string_view line) {
  std::string text(line);
  text += '\n';
  std::string_view rest = text;
  while (!rest.empty()) {
    const ssize_t written = write(descriptor, rest.data(), rest.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return errno == EPIPE;
    rest.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

}  // namespace

void UseBinaryStandardStreams() { std::ios::sync_with_stdio(false); }

void UseConsoleOfParent() {}

bool WriteLine(std::string_view line) { return WriteWhole(STDOUT_FILENO, line); }

bool WriteErrorLine(std::string_view line) { return WriteWhole(STDERR_FILENO, line); }

}  // namespace platform
