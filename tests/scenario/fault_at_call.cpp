// Loaded into a launcher (LD_PRELOAD): lets one of its calls fail, or ends it before a step on disk. Counts
// the calls on files below the program's directory and on sockets, the starts of threads and programs, and
// the allocations of 64 KiB or more. Environment:
//   FAULT_CALL     the function, for example rename
//   FAULT_AT       the number of its use that fails
//   FAULT_STAYS    not empty: every later use fails too, and a write is first cut short, as on a full disk
//   FAULT_KILL_AT  the number of the step before which SIGKILL ends the process: a rename, link, deletion,
//                  change of mode, flush or start of a program
//   FAULT_REPORT   a file that gets one line for the call that failed, or with FAULT_AT=0 for each counted
//                  call; sleeps and flushes, which would only cost time, end at once
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

namespace {

constexpr std::size_t kLargeBlock = 65536;
constexpr std::size_t kPathSize = 4096;

char root[kPathSize];  // the program's directory
std::string_view chosen;
int chosenUse = 0;
int killedStep = 0;
bool stays = false;
int report = -1;

/// What a call is about, or "" if it is not counted.
std::string Own(const char* path) {
  const std::string_view text = path != nullptr ? path : "";
  const std::size_t size = std::strlen(root);
  const bool isBelow = text.starts_with(root) && (text.size() == size || text[size] == '/');
  return isBelow && size > 0 ? std::string(text) : std::string();
}

std::string Own(int descriptor) {
  if (descriptor <= STDERR_FILENO) return {};
  const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
  char target[kPathSize] = {};
  if (syscall(SYS_readlink, link.c_str(), target, sizeof target - 1) < 0) return {};
  return std::string_view(target).starts_with("socket:") ? target : Own(target);
}

std::string Own(int folder, const char* path) { return path[0] == '/' ? Own(path) : Own(folder); }

std::string Large(std::size_t size) { return size >= kLargeBlock && root[0] != '\0' ? "?" : ""; }

enum class Fate { kSucceeds, kIsLeftOut, kIsCutShort, kFails };

/// Counts a use of the function.
Fate Count(std::string_view name, std::atomic<int>& uses, const std::string& target) {
  const bool isSlow = name == "fsync" || name == "syncfs" || name == "nanosleep";
  const Fate usual = isSlow && report >= 0 ? Fate::kIsLeftOut : Fate::kSucceeds;
  if (target.empty()) return usual;
  const int use = ++uses;
  const bool isChosen = name == chosen;
  if (report >= 0 && (chosenUse == 0 || (isChosen && use == chosenUse))) {
    const std::string line = std::string(name) + ' ' + target + '\n';
    syscall(SYS_write, report, line.data(), line.size());
  }
  if (chosenUse == 0 || !isChosen || use < chosenUse || (use > chosenUse && !stays)) return usual;
  const bool writes = name.find("write") != std::string_view::npos;
  return writes && stays && use == chosenUse ? Fate::kIsCutShort : Fate::kFails;
}

std::string Step(std::string target) {
  static std::atomic<int> steps = 0;
  if (!target.empty() && ++steps == killedStep) kill(getpid(), SIGKILL);
  return target;
}

template <typename Result>
Result Failure(std::string_view name, int error) {
  errno = error;
  if constexpr (std::is_pointer_v<Result>)
    return nullptr;
  else if constexpr (std::is_unsigned_v<Result>)
    return 0;
  else
    return name == "pthread_create" ? error : -1;
}

const char* Setting(const char* name) {
  const char* text = std::getenv(name);
  return text != nullptr ? text : "";
}

[[gnu::constructor]] void Start() {
  chosen = Setting("FAULT_CALL");
  chosenUse = std::atoi(Setting("FAULT_AT"));
  killedStep = std::atoi(Setting("FAULT_KILL_AT"));
  stays = *Setting("FAULT_STAYS") != '\0';
  const char* file = Setting("FAULT_REPORT");
  if (*file != '\0') report = static_cast<int>(syscall(SYS_open, file, O_WRONLY | O_APPEND | O_CLOEXEC));
  if (syscall(SYS_readlink, "/proc/self/exe", root, sizeof root - 1) < 0) abort();
  *std::strrchr(root, '/') = '\0';
}

}  // namespace

// Defines the function `name`. Names of our own for them keep clear of the headers' declarations.
// NOLINTBEGIN(bugprone-macro-parentheses): lists of parameters and arguments bring their own.
#define CALL_OR_PART(result, name, error, target, parameters, arguments, part)           \
  extern "C" result Call_##name parameters asm(#name);                                   \
  result Call_##name parameters {                                                        \
    static std::atomic<int> uses{0};                                                     \
    static auto* next = reinterpret_cast<result(*) parameters>(dlsym(RTLD_NEXT, #name)); \
    const Fate fate = Count(#name, uses, target);                                        \
    if (fate == Fate::kIsLeftOut) return static_cast<result>(0);                         \
    if (fate == Fate::kSucceeds) return next arguments;                                  \
    if (fate == Fate::kIsCutShort) return next part;                                     \
    /* A descriptor is gone also when its closing fails. */                              \
    if (std::string_view(#name).ends_with("close")) next arguments;                      \
    return Failure<result>(#name, error);                                                \
  }
// NOLINTEND(bugprone-macro-parentheses)
#define CALL(result, name, error, target, parameters, arguments) \
  CALL_OR_PART(result, name, error, target, parameters, arguments, arguments)

CALL(int, open, EACCES, Own(path), (const char* path, int flags, mode_t mode), (path, flags, mode))
CALL(int, openat, EACCES, Own(folder, path), (int folder, const char* path, int flags, mode_t mode),
     (folder, path, flags, mode))
CALL(FILE*, fopen64, EACCES, Own(path), (const char* path, const char* mode), (path, mode))
CALL(ssize_t, read, EIO, Own(file), (int file, void* data, std::size_t size), (file, data, size))
CALL(std::size_t, fread, EIO, Own(fileno(file)),
     (void* data, std::size_t size, std::size_t count, FILE* file), (data, size, count, file))
CALL_OR_PART(ssize_t, writev, ENOSPC, Own(file), (int file, const iovec* blocks, int count),
             (file, blocks, count), (file, blocks, (count + 1) / 2))
CALL_OR_PART(std::size_t, fwrite, ENOSPC, Own(fileno(file)),
             (const void* data, std::size_t size, std::size_t count, FILE* file), (data, size, count, file),
             (data, size, count / 2, file))
CALL(int, close, EIO, Own(file), (int file), (file))
CALL(int, fclose, EIO, Own(fileno(file)), (FILE * file), (file))
CALL(off64_t, lseek64, EIO, Own(file), (int file, off64_t at, int whence), (file, at, whence))
CALL(int, fseeko64, EIO, Own(fileno(file)), (FILE * file, off64_t at, int whence), (file, at, whence))
CALL(int, fsync, EIO, Step(Own(file)), (int file), (file))
CALL(int, syncfs, EIO, Own(file), (int file), (file))
CALL(int, nanosleep, EINTR, "", (const timespec* length, timespec* rest), (length, rest))
CALL(int, rename, EACCES, Step(Own(from)), (const char* from, const char* to), (from, to))
CALL(int, link, EPERM, Step(Own(from)), (const char* from, const char* to), (from, to))
CALL(int, remove, EACCES, Step(Own(path)), (const char* path), (path))
CALL(int, mkdir, EACCES, Own(path), (const char* path, mode_t mode), (path, mode))
CALL(int, fchmodat, EPERM, Step(Own(folder, path)), (int folder, const char* path, mode_t mode, int flags),
     (folder, path, mode, flags))
CALL(int, stat, EIO, Own(path), (const char* path, struct stat* status), (path, status))
CALL(int, lstat, EIO, Own(path), (const char* path, struct stat* status), (path, status))
CALL(int, fstat, EIO, Own(file), (int file, struct stat* status), (file, status))
CALL(char*, realpath, EIO, Own(path), (const char* path, char* target), (path, target))
CALL(dirent*, readdir, EIO, Own(dirfd(folder)), (DIR * folder), (folder))
CALL(int, flock, ENOLCK, Own(file), (int file, int operation), (file, operation))
CALL(int, socket, EMFILE, "?", (int domain, int type, int protocol), (domain, type, protocol))
CALL(int, connect, ECONNREFUSED, Own(file), (int file, const sockaddr* peer, socklen_t size),
     (file, peer, size))
CALL(ssize_t, send, ECONNRESET, Own(file), (int file, const void* data, std::size_t size, int flags),
     (file, data, size, flags))
CALL(ssize_t, recv, ECONNRESET, Own(file), (int file, void* data, std::size_t size, int flags),
     (file, data, size, flags))
CALL(int, execv, EACCES, Step(Own(path)), (const char* path, char* const* arguments), (path, arguments))
CALL(int, pthread_create, EAGAIN, "?",
     (pthread_t * thread, const pthread_attr_t* attributes, void* (*entry)(void*), void* argument),
     (thread, attributes, entry, argument))
CALL(void*, malloc, ENOMEM, Large(size), (std::size_t size), (size))
