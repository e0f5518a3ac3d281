#include "platform/process.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include <fcntl.h>
#include <linux/close_range.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/text.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

bool IsWindowsProgram(const fs::path& file) {
  char magic[2] = {};
  std::ifstream(file, std::ios::binary).read(magic, sizeof magic);
  return magic[0] == 'M' && magic[1] == 'Z';
}

/// A file from a download or an archive has no execute permission yet.
void AllowRunning(const fs::path& program) {
  if (access(program.c_str(), X_OK) == 0) return;
  std::error_code ignored;
  fs::permissions(program, fs::perms::owner_exec | fs::perms::group_exec | fs::perms::others_exec,
                  fs::perm_options::add, ignored);
}

[[noreturn]] void FailInChild(int error, int report) {
  [[maybe_unused]] const ssize_t written = write(report, &error, sizeof error);
  _exit(127);
}

enum class Streams { kInherited, kNone };

void DropStandardStreams() {
  const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) dup2(nothing, stream);
}

/// Runs in the grandchild: executes the program, or writes the error number to `report`.
[[noreturn]] void BecomeProgram(char* const* argv, const char* directory, Streams streams, int report) {
  if (chdir(directory) != 0) FailInChild(errno, report);
  if (streams == Streams::kNone) DropStandardStreams();
  std::signal(SIGPIPE, SIG_DFL);
  close_range(STDERR_FILENO + 1, ~0u, CLOSE_RANGE_CLOEXEC);
  // Not execvp for a path: it would pass a file that is not a program to the shell.
  if (std::strchr(argv[0], '/') != nullptr) {
    execv(argv[0], argv);
  } else {
    execvp(argv[0], argv);
  }
  FailInChild(errno, report);
}

/// Starts a program as a grandchild, so that init reaps it. Returns 0 or errno.
int StartDetached(std::vector<std::string> words, const fs::path& directory,
                  Streams streams = Streams::kInherited) {
  std::vector<char*> argv;
  argv.reserve(words.size() + 1);
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  int report[2];
  if (pipe2(report, O_CLOEXEC) != 0) return errno;
  const pid_t child = fork();
  if (child < 0) {
    const int error = errno;
    close(report[0]);
    close(report[1]);
    return error;
  }
  if (child == 0) {
    setsid();
    const pid_t grandchild = fork();
    if (grandchild == 0) BecomeProgram(argv.data(), directory.c_str(), streams, report[1]);
    if (grandchild < 0) FailInChild(errno, report[1]);
    _exit(0);
  }
  close(report[1]);
  waitpid(child, nullptr, 0);
  int error = 0;
  const ssize_t got = read(report[0], &error, sizeof error);
  close(report[0]);
  return got == sizeof error ? error : 0;
}

}  // namespace

fs::path OwnExecutablePath() {
  std::error_code error;
  return fs::read_symlink("/proc/self/exe", error);
}

std::vector<std::string> CommandLineArguments(int argc, char** argv) {
  return argc > 1 ? std::vector<std::string>(argv + 1, argv + argc) : std::vector<std::string>();
}

std::string CommandLineText(int argc, char** argv) {
  std::string text;
  for (int i = 0; i < argc; ++i) text += std::string(i > 0 ? " " : "") + argv[i];
  return text;
}

void SurviveBrokenPipes() { std::signal(SIGPIPE, SIG_IGN); }

int StartProgram(const fs::path& program, const std::vector<std::string>& arguments,
                 const fs::path& workingDirectory) {
  std::vector<std::string> words{program.native()};
  words.insert(words.end(), arguments.begin(), arguments.end());
  if (!IsWindowsProgram(program)) {
    AllowRunning(program);
    const int error = StartDetached(words, workingDirectory);
    return error == ENOEXEC ? kErrorBadExeFormat : error;
  }
  words.insert(words.begin(), "wine");
  const int error = StartDetached(words, workingDirectory);
  std::error_code ignored;
  const bool noWine = error == ENOENT && fs::is_directory(workingDirectory, ignored);
  return noWine ? kErrorBadExeFormat : error;
}

bool OpenInBrowser(const std::u16string& url) {
  return StartDetached({"xdg-open", WideToUtf8(url)}, "/", Streams::kNone) == 0;
}

void EndProcess(int code) {
  // WriteLine and WriteErrorLine leave nothing to flush.
  std::_Exit(code);
}

}  // namespace platform
