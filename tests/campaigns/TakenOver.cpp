// Preloaded into the program, acts as what a hostile scene could make of the process that reads it:
// confined already, that process attacks when it opens the scene.
//
//   TAKEN_OVER     the number of an attack; -1 hands over TAKEN_SCENE and TAKEN_MESSAGE instead
//   TAKEN_AT       the end of the scene's name
//   TAKEN_RESULT   a file of 256 bytes: gets a letter and the attack's name: "a" attacking, "r"
//                  refused, "s" succeeded; or "n" and how many attacks there are, when there is
//                  none of that number
//   TAKEN_SCENE, TAKEN_MESSAGE  files: what is handed over
//   TAKEN_STATUS   how the process then ends
//   TAKEN_TERMINAL, TAKEN_DESCRIPTOR  what the program was started with
//   TAKEN_KERNEL   set: Landlock and filters of system calls can't be had
#include <cerrno>
#include <charconv>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string>

#include <dlfcn.h>
#include <fcntl.h>
#include <linux/landlock.h>
#include <linux/openat2.h>
#include <sched.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

struct Bytes {
  char* data = nullptr;
  std::size_t size = 0;
};

constexpr std::size_t kResultSize = 256;
constexpr off_t kMessageSize = off_t{64} << 20;

// What the environment said; it is erased in the process that reads.
int chosen = 0;
int status = 0;
bool oldKernel = false;
int inherited = -1;
std::string sceneName;
std::string terminal;
char ownResult[kResultSize];
char* result = ownResult;
Bytes scene;
Bytes message;

bool isReader = false;

std::string TextOf(const char* name) {
  const char* const text = std::getenv(name);
  return text == nullptr ? "" : text;
}

/// The number that an environment variable holds; 0 when there is none.
int NumberOf(const char* name) {
  const std::string text = TextOf(name);
  int number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

/// The content of a file that an environment variable names.
Bytes Map(const char* name, int rights, int kind) {
  const int file = open(TextOf(name).c_str(), kind == MAP_SHARED ? O_RDWR : O_RDONLY);
  struct stat info {};
  if (file < 0 || fstat(file, &info) != 0 || info.st_size == 0) return {};
  const auto size = static_cast<std::size_t>(info.st_size);
  void* const data = mmap(nullptr, size, rights, kind, file, 0);
  close(file);
  return {static_cast<char*>(data), size};
}

bool ReadEnvironment() {
  chosen = NumberOf("TAKEN_OVER");
  status = NumberOf("TAKEN_STATUS");
  oldKernel = std::getenv("TAKEN_KERNEL") != nullptr;
  sceneName = TextOf("TAKEN_AT");
  terminal = TextOf("TAKEN_TERMINAL");
  if (std::getenv("TAKEN_DESCRIPTOR") != nullptr) inherited = NumberOf("TAKEN_DESCRIPTOR");
  const Bytes shown = Map("TAKEN_RESULT", PROT_READ | PROT_WRITE, MAP_SHARED);
  if (shown.size >= kResultSize) result = shown.data;
  scene = Map("TAKEN_SCENE", PROT_READ, MAP_PRIVATE);
  message = Map("TAKEN_MESSAGE", PROT_READ, MAP_PRIVATE);
  return true;
}
[[maybe_unused]] const bool isRead = ReadEnvironment();  // before main

/// The descriptors that the reader answers through, as they look; -1 for one that is not there.
struct Answers {
  int confinement = -1;
  int scene = -1;
  int message = -1;
  int stage = -1;
};

Answers FindAnswers() {
  Answers found;
  for (int fd = STDERR_FILENO + 1; fd < 64; ++fd) {
    struct stat info {};
    if (fstat(fd, &info) != 0) continue;
    if (S_ISFIFO(info.st_mode)) found.stage = fd;
    if (!S_ISREG(info.st_mode)) continue;
    (info.st_size == kMessageSize ? found.message
     : info.st_size == 0          ? found.scene
                                  : found.confinement) = fd;
  }
  return found;
}

void Write(int fd, const Bytes& bytes) {
  for (std::size_t at = 0; at < bytes.size;) {
    const ssize_t count = write(fd, bytes.data + at, bytes.size - at);
    if (count <= 0) return;
    at += static_cast<std::size_t>(count);
  }
}

// Attacks. Each returns what a call returned that must fail.

template <typename... Arguments>
long Sys(long number, Arguments... arguments) {
  return syscall(number, arguments...);
}

long Open(const std::string& path, int flags) {
  return open(path.c_str(), flags | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0600);
}

std::string Parent(const char* file) {
  return "/proc/" + std::to_string(getppid()) + "/" + file;
}

long Mapped(const void* place) {
  return place == MAP_FAILED ? -1 : 0;
}

long ManyOpenFiles() {
  int opened[256];
  std::size_t count = 0;
  while (count < std::size(opened) && (opened[count] = static_cast<int>(Open(".", O_RDONLY))) >= 0)
    ++count;
  for (std::size_t i = 0; i < count; ++i) close(opened[i]);
  return count < 64 ? -1 : 0;
}

/// Tries to replace what the reader said of its confinement by "in force".
long FalseStatus() {
  static constexpr char kInForce[6 * sizeof(std::uint64_t)] = {};
  const int file = FindAnswers().confinement;
  const std::string again = "/proc/self/fd/" + std::to_string(file);
  const long tries[] = {write(file, kInForce, sizeof kInForce),
                        pwrite(file, kInForce, sizeof kInForce, 0),
                        ftruncate(file, sizeof kInForce),
                        fallocate(file, FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, 0, 16),
                        Mapped(mmap(nullptr, 4096, PROT_WRITE, MAP_SHARED, file, 0)),
                        pwrite(static_cast<int>(Open(again, O_RDWR)), kInForce, 8, 0)};
  lseek(file, 0, SEEK_SET);  // which the program shares
  for (const long each : tries) {
    if (each >= 0) return 0;
  }
  return -1;
}

long ShutEars() {
  for (int each = 1; each < NSIG; ++each) signal(each, SIG_IGN);
  sigset_t all;
  sigfillset(&all);
  sigprocmask(SIG_SETMASK, &all, nullptr);
  return 0;
}

[[noreturn]] long Spin() {
  ShutEars();
  for (const volatile bool forever = true; forever;) {
  }
  std::abort();
}

[[noreturn]] long Sleep() {
  ShutEars();
  for (;;) sleep(1);
}

[[noreturn]] long FillPipe() {
  ShutEars();
  static char bytes[4096] = {};
  for (;;) Write(FindAnswers().stage, {bytes, sizeof bytes});
}

struct Attack {
  const char* name;
  long (*act)();
};

constexpr Attack kAttacks[] = {
    // Those that come first take long.
    {"loops", Spin},
    {"sleeps", Sleep},
    {"fills the pipe", FillPipe},
    // files
    {"opens the scene to write", [] { return Open("a.obj", O_WRONLY); }},
    {"opens an output for both", [] { return Open("out.kob", O_RDWR); }},
    {"appends to an output", [] { return Open("out.kob", O_WRONLY | O_APPEND); }},
    {"truncates when opening", [] { return Open("out.kob", O_RDONLY | O_TRUNC); }},
    {"creates a file", [] { return Open("new", O_WRONLY | O_CREAT); }},
    {"creates a file elsewhere", [] { return Open("/tmp/mapexport-new", O_WRONLY | O_CREAT); }},
    {"makes a nameless file", [] { return Open(".", O_TMPFILE | O_RDWR); }},
    {"openat2",
     [] {
       open_how how{};
       how.flags = O_WRONLY;
       return Sys(SYS_openat2, AT_FDCWD, "out.kob", &how, sizeof how);
     }},
    {"open_by_handle_at", [] { return Sys(SYS_open_by_handle_at, AT_FDCWD, nullptr, O_RDONLY); }},
    {"name_to_handle_at",
     [] { return Sys(SYS_name_to_handle_at, AT_FDCWD, ".", nullptr, nullptr, 0); }},
    {"truncates", [] { return Sys(SYS_truncate, "out.kob", 0); }},
    {"removes", [] { return Sys(SYS_unlinkat, AT_FDCWD, "a.obj", 0); }},
    {"renames", [] { return Sys(SYS_renameat2, AT_FDCWD, "a.obj", AT_FDCWD, "out.kob", 0); }},
    {"exchanges", [] { return Sys(SYS_renameat2, AT_FDCWD, "a.obj", AT_FDCWD, "out.kob", 2); }},
    {"links", [] { return Sys(SYS_linkat, AT_FDCWD, "a.obj", AT_FDCWD, "new", 0); }},
    {"makes a link", [] { return Sys(SYS_symlinkat, "a.obj", AT_FDCWD, "new"); }},
    {"makes a folder", [] { return Sys(SYS_mkdirat, AT_FDCWD, "new", 0700); }},
    {"makes a pipe", [] { return Sys(SYS_mknodat, AT_FDCWD, "new", S_IFIFO | 0600, 0); }},
    {"changes rights", [] { return Sys(SYS_fchmodat, AT_FDCWD, "out.kob", 0777); }},
    {"changes the owner", [] { return Sys(SYS_fchownat, AT_FDCWD, "out.kob", 1, 1, 0); }},
    {"changes times", [] { return Sys(SYS_utimensat, AT_FDCWD, "out.kob", nullptr, 0); }},
    {"sets an attribute", [] { return Sys(SYS_setxattr, "out.kob", "user.a", "b", 1, 0); }},
    {"mounts", [] { return Sys(SYS_mount, ".", ".", nullptr, 4096, nullptr); }},
    {"changes its root", [] { return Sys(SYS_chroot, "."); }},
    {"watches files", [] { return Sys(SYS_inotify_init1, 0); }},
    // other processes
    {"the parent's memory to write", [] { return Open(Parent("mem"), O_RDWR); }},
    {"the parent's memory", [] { return Open(Parent("mem"), O_RDONLY); }},
    {"the parent's environment", [] { return Open(Parent("environ"), O_RDONLY); }},
    {"the parent's command line", [] { return Open(Parent("cmdline"), O_RDONLY); }},
    {"the parent's map", [] { return Open(Parent("maps"), O_RDONLY); }},
    {"the parent's descriptors", [] { return Open(Parent("fd"), O_RDONLY); }},
    {"the parent's files", [] { return Open(Parent("fd/1"), O_RDONLY); }},
    {"the parent's folder", [] { return Open(Parent("cwd/a.obj"), O_RDONLY); }},
    {"another's command line", [] { return Open("/proc/1/cmdline", O_RDONLY); }},
    {"the list of processes", [] { return Open("/proc", O_RDONLY); }},
    {"the kernel's settings", [] { return Open("/proc/sys/kernel/hostname", O_RDONLY); }},
    {"the kernel's objects", [] { return Open("/sys", O_RDONLY); }},
    {"what services share", [] { return Open("/run", O_RDONLY); }},
    {"ptrace", [] { return Sys(SYS_ptrace, 16, getppid(), 0, 0); }},
    {"process_vm_writev", [] { return Sys(SYS_process_vm_writev, getppid(), 0, 0, 0, 0, 0); }},
    {"process_vm_readv", [] { return Sys(SYS_process_vm_readv, getppid(), 0, 0, 0, 0, 0); }},
    {"pidfd_open", [] { return Sys(SYS_pidfd_open, getppid(), 0); }},
    {"the parent's limits",
     [] {
       const rlimit none{0, 0};
       return Sys(SYS_prlimit64, getppid(), RLIMIT_NOFILE, &none, nullptr);
     }},
    {"the parent's priority", [] { return Sys(SYS_setpriority, PRIO_PROCESS, getppid(), 19); }},
    {"the parent's processors",
     [] {
       const unsigned long first = 1;
       return Sys(SYS_sched_setaffinity, getppid(), sizeof first, &first);
     }},
    {"another process", [] { return Sys(SYS_clone, SIGCHLD, 0, 0, 0, 0); }},
    {"clone3", [] { return Sys(SYS_clone3, nullptr, 0); }},
    {"another program", [] { return Sys(SYS_execve, "/bin/true", nullptr, nullptr); }},
    {"a program by descriptor", [] { return Sys(SYS_execveat, 0, "", nullptr, nullptr, 0x1000); }},
    {"a name space of its own", [] { return Sys(SYS_unshare, CLONE_NEWUSER); }},
    {"shared memory", [] { return Sys(SYS_shmget, 0, 4096, 0600); }},
    // signals
    {"ends the parent", [] { return Sys(SYS_kill, getppid(), SIGTERM); }},
    {"ends a thread of the parent", [] { return Sys(SYS_tkill, getppid(), SIGTERM); }},
    {"ends it with tgkill", [] { return Sys(SYS_tgkill, getppid(), getppid(), SIGTERM); }},
    {"signals everybody", [] { return Sys(SYS_kill, -1, 0); }},
    {"signals its group", [] { return Sys(SYS_kill, 0, 0); }},
    {"queues a signal", [] { return Sys(SYS_rt_sigqueueinfo, getppid(), SIGTERM, nullptr); }},
    {"has signals sent", [] { return static_cast<long>(fcntl(0, F_SETOWN, getppid())); }},
    // network
    {"TCP", [] { return Sys(SYS_socket, AF_INET, SOCK_STREAM, 0); }},
    {"UDP", [] { return Sys(SYS_socket, AF_INET6, SOCK_DGRAM, 0); }},
    {"a local socket", [] { return Sys(SYS_socket, AF_UNIX, SOCK_STREAM, 0); }},
    {"the kernel's socket", [] { return Sys(SYS_socket, AF_NETLINK, SOCK_RAW, 0); }},
    {"a pair of sockets", [] { return Sys(SYS_socketpair, AF_UNIX, SOCK_STREAM, 0, nullptr); }},
    {"connects", [] { return Sys(SYS_connect, FindAnswers().stage, nullptr, 0); }},
    {"sends", [] { return Sys(SYS_sendto, FindAnswers().stage, "a", 1, 0, nullptr, 0); }},
    {"a ring of calls", [] { return Sys(SYS_io_uring_setup, 1, nullptr); }},
    // terminals
    {"the terminal's keystrokes", [] { return Open(terminal, O_RDONLY); }},
    {"the terminal to write", [] { return Open(terminal, O_WRONLY); }},
    {"its own terminal", [] { return Open("/dev/tty", O_RDONLY); }},
    {"a new terminal", [] { return Open("/dev/ptmx", O_RDONLY); }},
    {"the list of terminals", [] { return Open("/dev/pts", O_RDONLY); }},
    {"types", [] { return Sys(SYS_ioctl, 0, TIOCSTI, "a"); }},
    // descriptors
    {"an inherited descriptor", [] { return static_cast<long>(write(inherited, "a", 1)); }},
    {"many open files", ManyOpenFiles},
    {"copies a descriptor", [] { return Sys(SYS_dup3, FindAnswers().scene, 100, 0); }},
    {"a memory file", [] { return Sys(SYS_memfd_create, "new", 0); }},
    {"a pipe as a file", [] { return Sys(SYS_vmsplice, FindAnswers().stage, nullptr, 0, 0); }},
    {"a longer message",
     [] { return static_cast<long>(pwrite(FindAnswers().message, "a", 1, kMessageSize)); }},
    {"a false status", FalseStatus},
    // limits
    {"more processor time",
     [] {
       const rlimit all{RLIM_INFINITY, RLIM_INFINITY};
       return Sys(SYS_prlimit64, 0, RLIMIT_CPU, &all, nullptr);
     }},
    {"no alarm", [] { return Sys(SYS_setitimer, 0, nullptr, nullptr); }},
    {"no timer", [] { return Sys(SYS_timer_delete, 0); }},
    {"another timer", [] { return Sys(SYS_timer_settime, 0, 0, nullptr, nullptr); }},
    {"to outlive the parent", [] { return Sys(SYS_prctl, PR_SET_PDEATHSIG, 0, 0, 0, 0); }},
    // memory and rights
    {"memory to write and execute",
     [] { return Mapped(mmap(nullptr, 4096, 7, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)); }},
    {"memory to execute",
     [] { return Mapped(mmap(nullptr, 4096, 5, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)); }},
    {"pkey_mprotect", [] { return Sys(SYS_pkey_mprotect, nullptr, 0, PROT_EXEC, -1); }},
    {"another user", [] { return Sys(SYS_setresuid, 0, 0, 0); }},
    {"rights", [] { return Sys(SYS_capset, nullptr, nullptr); }},
    {"keys", [] { return Sys(SYS_keyctl, 0, 0, 0, 0, 0); }},
    {"bpf", [] { return Sys(SYS_bpf, 0, nullptr, 0); }},
    {"perf_event_open", [] { return Sys(SYS_perf_event_open, nullptr, 0, -1, -1, 0); }},
    {"userfaultfd", [] { return Sys(SYS_userfaultfd, 0); }},
    {"a call that does not exist", [] { return Sys(1000); }},
};

void SetResult(char letter, const char* name) {
  std::snprintf(result, kResultSize, "%c%s", letter, name);
}

void TakeOver() {
  if (chosen < 0) {
    const Answers answers = FindAnswers();
    SetResult('a', "hands over");
    if (oldKernel) FalseStatus();
    Write(answers.scene, scene);
    Write(answers.message, message);
    _exit(status);
  }
  if (static_cast<std::size_t>(chosen) >= std::size(kAttacks)) {
    SetResult('n', std::to_string(std::size(kAttacks)).c_str());
    return;
  }
  const Attack& attack = kAttacks[chosen];
  SetResult('a', attack.name);
  const bool failed = attack.act() < 0;
  // Other reasons tell nothing: the attack may be a bad one.
  const bool refused =
      failed && (errno == EPERM || errno == EACCES || errno == EMFILE || errno == EBADF);
  SetResult(refused ? 'r' : 's', attack.name);
}

/// Once, when the reader opens the scene.
void NoteOpening(const char* path) {
  const std::string name(path);
  if (!isReader || sceneName.empty() || !name.ends_with(sceneName)) return;
  isReader = false;
  TakeOver();
}

}  // namespace

extern "C" {

// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name): these are names of the C
// library.
std::FILE* fopen(const char* path, const char* mode) {
  static auto* const next = reinterpret_cast<decltype(&fopen)>(dlsym(RTLD_NEXT, "fopen"));
  NoteOpening(path);
  return next(path, mode);
}
std::FILE* fopen64(const char* path, const char* mode) {
  static auto* const next = reinterpret_cast<decltype(&fopen)>(dlsym(RTLD_NEXT, "fopen64"));
  NoteOpening(path);
  return next(path, mode);
}

/// By which the process that reads is known.
int prctl(int option, ...) {
  va_list list;
  va_start(list, option);
  unsigned long values[4];
  for (unsigned long& value : values) value = va_arg(list, unsigned long);
  va_end(list);
  if (option == PR_SET_PDEATHSIG) isReader = true;
  return static_cast<int>(syscall(SYS_prctl, option, values[0], values[1], values[2], values[3]));
}

long syscall(long number, ...) noexcept {
  static auto* const next = reinterpret_cast<decltype(&syscall)>(dlsym(RTLD_NEXT, "syscall"));
  va_list list;
  va_start(list, number);
  long values[6];
  for (long& value : values) value = va_arg(list, long);
  va_end(list);
  if (oldKernel && number == SYS_landlock_create_ruleset) {
    errno = ENOSYS;
    return -1;
  }
  return next(number, values[0], values[1], values[2], values[3], values[4], values[5]);
}

int seccomp_load(void* filter) {
  static auto* const next = reinterpret_cast<int (*)(void*)>(dlsym(RTLD_NEXT, "seccomp_load"));
  return oldKernel ? -ENOSYS : next(filter);
}
// NOLINTEND(readability-inconsistent-declaration-parameter-name)

}  // extern "C"
