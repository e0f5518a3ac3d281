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

int Fail(int error) {
  Step();
  errno = error;
  return -1;
}

/// Counts a step and calls the library's own function.
template <typename... Arguments>
int Do(const char* function, Arguments... arguments) {
  Step();
  return reinterpret_cast<int (*)(Arguments...)>(dlsym(RTLD_NEXT, function))(arguments...);
}

}  // namespace

extern "C" {
int rename(const char* from, const char* to) noexcept {
  return IsRefused(from) ? Fail(EACCES) : Do("rename", from, to);
}
int link(const char* from, const char* to) noexcept {
  return *Setting("FAULT_NO_LINKS") != '\0' ? Fail(EPERM) : Do("link", from, to);
}
int remove(const char* file) noexcept { return Do("remove", file); }
int unlink(const char* file) noexcept { return Do("unlink", file); }
int fchmodat(int folder, const char* file, mode_t mode, int flags) noexcept {
  return Do("fchmodat", folder, file, mode, flags);
}
int fsync(int descriptor) { return Do("fsync", descriptor); }
int execv(const char* program, char* const argv[]) noexcept { return Do("execv", program, argv); }
}
