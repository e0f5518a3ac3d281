// Loaded into a launcher (LD_PRELOAD): FAULT_KILL_AT=N ends the process with SIGKILL before its N-th step on
// the launcher's own files, FAULT_REFUSE=NAME lets every rename of the file NAME fail, FAULT_NO_LINKS=1 every
// hard link. A step is a rename, a link, a deletion, a change of mode, a flush or a start of a program.
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

void Step() {
  static const char* limit = std::getenv("FAULT_KILL_AT");
  static int steps = 0;
  if (limit != nullptr && __atomic_add_fetch(&steps, 1, __ATOMIC_SEQ_CST) == std::atoi(limit)) {
    kill(getpid(), SIGKILL);
  }
}

template <typename Function>
Function* Next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

bool EndsWith(const char* text, const char* end) {
  const std::size_t length = std::strlen(text);
  const std::size_t tail = std::strlen(end);
  return length >= tail && std::strcmp(text + length - tail, end) == 0;
}

}  // namespace

extern "C" {

int rename(const char* from, const char* to) noexcept {
  Step();
  const char* refused = std::getenv("FAULT_REFUSE");
  if (refused != nullptr && EndsWith(from, refused)) {
    errno = EACCES;
    return -1;
  }
  return Next<int(const char*, const char*)>("rename")(from, to);
}

int link(const char* from, const char* to) noexcept {
  Step();
  if (std::getenv("FAULT_NO_LINKS") != nullptr) {
    errno = EPERM;
    return -1;
  }
  return Next<int(const char*, const char*)>("link")(from, to);
}

int remove(const char* file) noexcept {
  Step();
  return Next<int(const char*)>("remove")(file);
}

int unlink(const char* file) noexcept {
  Step();
  return Next<int(const char*)>("unlink")(file);
}

int fchmodat(int directory, const char* file, mode_t mode, int flags) noexcept {
  Step();
  return Next<int(int, const char*, mode_t, int)>("fchmodat")(directory, file, mode, flags);
}

int fsync(int descriptor) {
  Step();
  return Next<int(int)>("fsync")(descriptor);
}

int execv(const char* program, char* const argv[]) noexcept {
  Step();
  return Next<int(const char*, char* const[])>("execv")(program, argv);
}
}
