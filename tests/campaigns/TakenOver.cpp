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

#include "campaigns/Attacks.h"

namespace {

using namespace mapexport;

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
  attackedTerminal = TextOf("TAKEN_TERMINAL");
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

// Those that come first take long.
constexpr Attack kOwnAttacks[] = {
    {"loops", "", Spin},
    {"sleeps", "", Sleep},
    {"fills the pipe", "", FillPipe},
    {"connects", "", [] { return Sys(SYS_connect, FindAnswers().stage, nullptr, 0); }},
    {"sends", "", [] { return Sys(SYS_sendto, FindAnswers().stage, "a", 1, 0, nullptr, 0); }},
    {"an inherited descriptor", "", [] { return static_cast<long>(write(inherited, "a", 1)); }},
    {"many open files", "", ManyOpenFiles},
    {"copies a descriptor", "", [] { return Sys(SYS_dup3, FindAnswers().scene, 100, 0); }},
    {"a pipe as a file", "", [] { return Sys(SYS_vmsplice, FindAnswers().stage, nullptr, 0, 0); }},
    {"a longer message", "",
     [] { return static_cast<long>(pwrite(FindAnswers().message, "a", 1, kMessageSize)); }},
    {"a false status", "", FalseStatus},
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
  const auto index = static_cast<std::size_t>(chosen);
  if (index >= std::size(kOwnAttacks) + std::size(kAttacks)) {
    SetResult('n', std::to_string(std::size(kOwnAttacks) + std::size(kAttacks)).c_str());
    return;
  }
  const Attack& attack = index < std::size(kOwnAttacks) ? kOwnAttacks[index]
                                                        : kAttacks[index - std::size(kOwnAttacks)];
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
int open(const char* path, int flags, ...) {
  static auto* const next = reinterpret_cast<decltype(&open)>(dlsym(RTLD_NEXT, "open"));
  va_list list;
  va_start(list, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(list, mode_t) : 0;
  va_end(list);
  if ((flags & O_PATH) == 0) NoteOpening(path);  // that is for rules of what may be opened
  return next(path, flags, mode);
}
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
