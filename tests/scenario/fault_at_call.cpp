// Loaded into a launcher (LD_PRELOAD): one of its system calls fails. Each kind of call is counted for
// itself: those on files below the program's directory and on sockets, the starts of threads, and the
// allocations of 64 KiB or more.
//   FAULT_REPORT=FILE  gets one line for the call that failed, or with FAULT_AT=0 for each counted call
//   FAULT_CALL=NAME    the kind, for example openat
//   FAULT_AT=N         its N-th use fails
//   FAULT_STAYS=1      and every later one; if that is a write, the N-th is only cut short, as on a disk that
//   fills up
// The kernel traps the calls (seccomp), so those inside the C library are counted too. Sleeps end at once,
// and a flush does nothing: they would only cost time. For x86-64, and for launchers that start no program.
#include <atomic>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include <dlfcn.h>
#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <malloc.h>
#include <pthread.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <ucontext.h>
#include <unistd.h>

extern "C" {
// A system call that is not trapped: the filter knows the address after its instruction.
long RawCall(long number, ...);
extern const char RawCallEnd[];
// NOLINTBEGIN(bugprone-reserved-identifier): the C library's own, since a search for the next ones would
// allocate
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
// NOLINTEND(bugprone-reserved-identifier)
}
asm(R"(
  .text
  .globl RawCall, RawCallEnd
RawCall:
  movq %rdi, %rax
  movq %rsi, %rdi
  movq %rdx, %rsi
  movq %rcx, %rdx
  movq %r8, %r10
  movq %r9, %r8
  movq 8(%rsp), %r9
  syscall
RawCallEnd:
  ret
)");

namespace {

constexpr std::size_t kLargeBlock = 65536;
constexpr std::size_t kPathSize = 4096;

/// What the call is about: its first argument, the first two, or nothing.
enum class Subject { kPath, kPathAt, kDescriptor, kNone };

struct Kind {
  const char* name;
  long number;  // of the system call; -1: a function
  int error;
  Subject subject;
  std::atomic<int> uses{0};
};

#define CALL(name, error, subject) \
  { #name, SYS_##name, error, Subject::subject }
Kind kinds[] = {
    CALL(openat, EACCES, kPathAt),
    CALL(read, EIO, kDescriptor),
    CALL(write, ENOSPC, kDescriptor),
    CALL(writev, ENOSPC, kDescriptor),
    CALL(close, EIO, kDescriptor),
    CALL(lseek, EIO, kDescriptor),
    CALL(fsync, EIO, kDescriptor),
    CALL(syncfs, EIO, kDescriptor),
    CALL(rename, EACCES, kPath),
    CALL(unlink, EACCES, kPath),
    CALL(rmdir, EACCES, kPath),
    CALL(mkdir, EACCES, kPath),
    CALL(newfstatat, EIO, kPathAt),
    CALL(readlink, EIO, kPath),
    CALL(getdents64, EIO, kDescriptor),
    CALL(flock, ENOLCK, kDescriptor),
    CALL(socket, EMFILE, kNone),
    CALL(connect, ECONNREFUSED, kDescriptor),
    CALL(sendto, ECONNRESET, kDescriptor),
    CALL(recvfrom, ECONNRESET, kDescriptor),
    CALL(setsockopt, ENOBUFS, kDescriptor),
    CALL(getsockopt, ENOBUFS, kDescriptor),
    CALL(getsockname, ENOBUFS, kDescriptor),
    CALL(getpeername, ENOBUFS, kDescriptor),
    {"pthread_create", -1, EAGAIN, Subject::kNone},
    {"malloc", -1, ENOMEM, Subject::kNone},
};
#undef CALL

char root[kPathSize];  // the program's directory
const char* chosen = "";
int chosenUse = 0;
bool stays = false;
int report = -1;

bool IsOwnPath(const char* path) {
  const std::size_t size = std::strlen(root);
  return std::strncmp(path, root, size) == 0 && (path[size] == '/' || path[size] == '\0');
}

/// What a descriptor leads to, or "" if that is neither an own file nor a socket.
const char* OwnTarget(int descriptor, char* target) {
  if (descriptor <= STDERR_FILENO) return "";
  char link[32] = "/proc/self/fd/";
  *std::to_chars(link + std::strlen(link), link + sizeof link - 1, descriptor).ptr = '\0';
  const long size = RawCall(SYS_readlink, link, target, kPathSize - 1);
  target[size > 0 ? size : 0] = '\0';
  return IsOwnPath(target) || std::strncmp(target, "socket:", 7) == 0 ? target : "";
}

/// What a trapped call is about, or "" if it is not counted.
const char* Target(const Kind& kind, const greg_t* registers, char* buffer) {
  if (kind.subject == Subject::kNone) return "?";
  const auto descriptor = static_cast<int>(registers[REG_RDI]);
  if (kind.subject == Subject::kDescriptor) return OwnTarget(descriptor, buffer);
  const greg_t path = registers[kind.subject == Subject::kPath ? REG_RDI : REG_RSI];
  const auto* text = reinterpret_cast<const char*>(path);
  if (kind.subject == Subject::kPathAt && (text == nullptr || text[0] != '/')) {
    return OwnTarget(descriptor, buffer);
  }
  return IsOwnPath(text) ? text : "";
}

void Report(const char* name, const char* target) {
  iovec parts[] = {{}, {}, {}, {}};
  const char* texts[] = {name, " ", target, "\n"};
  for (std::size_t i = 0; i < std::size(parts); ++i) {
    parts[i] = {const_cast<char*>(texts[i]), std::strlen(texts[i])};
  }
  RawCall(SYS_writev, report, parts, std::size(parts));
}

enum class Fate { kSucceeds, kIsCutShort, kFails };

/// Counts a use.
Fate Count(Kind& kind, const char* target) {
  const int use = ++kind.uses;
  const bool isChosen = std::strcmp(kind.name, chosen) == 0;
  if (chosenUse == 0 || (isChosen && use == chosenUse)) Report(kind.name, target);
  if (chosenUse == 0 || !isChosen || use < chosenUse || (use > chosenUse && !stays)) return Fate::kSucceeds;
  const bool writes = kind.number == SYS_write || kind.number == SYS_writev;
  return writes && stays && use == chosenUse ? Fate::kIsCutShort : Fate::kFails;
}

bool FunctionFails(const char* name) {
  if (report < 0) return false;
  for (Kind& kind : kinds) {
    if (std::strcmp(kind.name, name) == 0) return Count(kind, "?") == Fate::kFails;
  }
  return false;
}

bool BlockFails(std::size_t size) {
  if (size < kLargeBlock || !FunctionFails("malloc")) return false;
  errno = ENOMEM;
  return true;
}

long Perform(long number, const greg_t* registers) {
  if (number == SYS_fsync || number == SYS_fdatasync || number == SYS_syncfs) return 0;
  return RawCall(number, registers[REG_RDI], registers[REG_RSI], registers[REG_RDX], registers[REG_R10],
                 registers[REG_R8], registers[REG_R9]);
}

void OnCall(int, siginfo_t* info, void* context) {
  greg_t* registers = static_cast<ucontext_t*>(context)->uc_mcontext.gregs;
  registers[REG_RAX] = 0;  // for a sleep
  char buffer[kPathSize];
  for (Kind& kind : kinds) {
    if (kind.number != info->si_syscall) continue;
    const char* target = Target(kind, registers, buffer);
    const Fate fate = *target == '\0' ? Fate::kSucceeds : Count(kind, target);
    // Half of the bytes, or of the blocks.
    if (fate == Fate::kIsCutShort) registers[REG_RDX] = (registers[REG_RDX] + 1) / 2;
    // A descriptor is gone also when its closing fails.
    if (fate != Fate::kFails || kind.number == SYS_close)
      registers[REG_RAX] = Perform(kind.number, registers);
    if (fate == Fate::kFails) registers[REG_RAX] = -kind.error;
  }
}

sock_filter Load(std::size_t offset) {
  return BPF_STMT(BPF_LD | BPF_W | BPF_ABS, static_cast<std::uint32_t>(offset));
}

/// How many instructions to pass over.
sock_filter Compare(std::uintptr_t value, std::size_t ifEqual, std::size_t ifNot) {
  return BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(value),
                  static_cast<std::uint8_t>(ifEqual), static_cast<std::uint8_t>(ifNot));
}

void TrapCalls() {
  constexpr std::size_t kPass = std::size(kinds) + 6;  // where the instruction to let pass is
  const auto raw = reinterpret_cast<std::uintptr_t>(RawCallEnd);
  sock_filter filter[kPass + 2] = {Load(offsetof(seccomp_data, instruction_pointer)),
                                   Compare(raw, 0, 2),
                                   Load(offsetof(seccomp_data, instruction_pointer) + 4),
                                   Compare(raw >> 32, kPass - 4, 0),
                                   Load(offsetof(seccomp_data, nr)),
                                   Compare(SYS_clock_nanosleep, kPass - 5, 0)};
  for (std::size_t i = 6; i < kPass; ++i) {
    filter[i] = Compare(static_cast<std::uint32_t>(kinds[i - 6].number), kPass - i, 0);
  }
  filter[kPass] = BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW);
  filter[kPass + 1] = BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_TRAP);
  const sock_fprog program{kPass + 2, filter};
  struct sigaction action = {};
  action.sa_sigaction = OnCall;
  action.sa_flags = SA_SIGINFO | SA_NODEFER;
  const bool done = sigaction(SIGSYS, &action, nullptr) == 0 && prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
                    prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
  if (!done) abort();
}

const char* Setting(const char* name) {
  const char* text = std::getenv(name);
  return text != nullptr ? text : "";
}

[[gnu::constructor]] void Start() {
  const char* file = Setting("FAULT_REPORT");
  if (*file == '\0') return;
  chosen = Setting("FAULT_CALL");
  chosenUse = std::atoi(Setting("FAULT_AT"));
  stays = *Setting("FAULT_STAYS") != '\0';
  if (readlink("/proc/self/exe", root, sizeof root - 1) < 0) abort();
  *std::strrchr(root, '/') = '\0';
  // A thread ends with all signals blocked, when a trapped call would end the process. To give back the
  // memory of an arena of its own it would open a file.
  mallopt(M_ARENA_MAX, 1);
  report = open(file, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
  TrapCalls();
}

}  // namespace

extern "C" {

void* malloc(std::size_t size) { return BlockFails(size) ? nullptr : __libc_malloc(size); }

void* calloc(std::size_t count, std::size_t size) {
  return BlockFails(count * size) ? nullptr : __libc_calloc(count, size);
}

void* realloc(void* block, std::size_t size) {
  return BlockFails(size) ? nullptr : __libc_realloc(block, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size) {
  return BlockFails(size) ? nullptr : __libc_memalign(alignment, size);
}

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*entry)(void*),
                   void* argument) noexcept {
  if (FunctionFails("pthread_create")) return EAGAIN;
  using Create = int(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
  static auto* next = reinterpret_cast<Create*>(dlsym(RTLD_NEXT, "pthread_create"));
  return next(thread, attributes, entry, argument);
}
}
