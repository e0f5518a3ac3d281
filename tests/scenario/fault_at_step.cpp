// Loaded into a launcher (LD_PRELOAD): FAULT_KILL_AT=N ends the process with SIGKILL before its N-th step on
// the launcher's own files, FAULT_REFUSE=NAME lets every rename of the file NAME fail, FAULT_NO_LINKS=1 every
// hard link. A step is a rename, a link, a deletion, a change of mode, a flush or a start of a program.
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <string_view>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

const char* Setting(const char* name) {
  const char* text = std::getenv(name);
  return text != nullptr ? text : "";
}

void Step() {
  static std::atomic<int> steps = 0;
  if (++steps == std::atoi(Setting("FAULT_KILL_AT"))) kill(getpid(), SIGKILL);
}

bool IsRefused(std::string_view file) {
  const std::string_view refused = Setting("FAULT_REFUSE");
  return !refused.empty() && file.ends_with(refused);
}

}  // namespace

// Counts the step, then calls the library's own function unless the step is to fail.
#define STEP(name, parameters, arguments, fails, error)                    \
  int name parameters {                                                    \
    Step();                                                                \
    if (fails) {                                                           \
      errno = error;                                                       \
      return -1;                                                           \
    }                                                                      \
    using Function = int parameters;                                       \
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, #name)) arguments; \
  }

extern "C" {
STEP(rename, (const char* from, const char* to) noexcept, (from, to), IsRefused(from), EACCES)
STEP(link, (const char* from, const char* to) noexcept, (from, to), *Setting("FAULT_NO_LINKS") != '\0', EPERM)
STEP(remove, (const char* file) noexcept, (file), false, 0)
STEP(unlink, (const char* file) noexcept, (file), false, 0)
STEP(fchmodat, (int folder, const char* file, mode_t mode, int flags) noexcept, (folder, file, mode, flags),
     false, 0)
STEP(fsync, (int descriptor), (descriptor), false, 0)
STEP(execv, (const char* program, char* const argv[]) noexcept, (program, argv), false, 0)
}
