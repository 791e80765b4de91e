// Preloaded into a program, lets the n-th call of one kind fail, to see what the program does then.
//
//   FAILING_KIND    the kind of calls, a name of kKinds
//   FAILING_AT      n, from 1; 0 lets none fail
//   FAILING_ERROR   the errno of the failure; 0: a read or write of one byte instead
//   FAILING_SIGNAL  a signal that the process gets before the call, which then does not fail
//   FAILING_ON      set: all calls after the n-th fail, too
//   FAILING_CHILD   set: calls of forked processes count, instead of those of the program itself
//   FAILING_COUNTS  a file of two u64, which become the numbers of calls in the program and in what
//                   it forked
//
// What happens before main is not counted, nor is what the C library calls within itself.
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

enum Kind { kAlloc, kClose, kLock, kMake, kMap, kOpen, kProcess, kRead, kRemove, kRename, kStat };
enum { kSync = kStat + 1, kTruncate, kWrite };
constexpr const char* kKinds[] = {"alloc", "close",   "lock",     "make",   "map",
                                  "open",  "process", "read",     "remove", "rename",
                                  "stat",  "sync",    "truncate", "write"};
constexpr int kIoErrSeen = 0x20;  // of FILE's flags: what ferror asks for

int chosen = -1;
std::uint64_t failingAt = 0;
int failingError = 0;
int failingSignal = 0;
bool failingOn = false;
int failingProcess = 0;
int process = 0;  // 1 in what was forked
bool begun = false;
std::uint64_t ownCounts[2];
std::uint64_t* counts = ownCounts;

std::uint64_t NumberOf(const char* name) {
  const char* const text = std::getenv(name);
  return text == nullptr ? 0 : std::strtoull(text, nullptr, 10);
}

[[gnu::constructor]] void ReadEnvironment() {
  const char* const kind = std::getenv("FAILING_KIND");
  for (int i = 0; kind != nullptr && i <= kWrite; ++i) {
    if (std::strcmp(kind, kKinds[i]) == 0) chosen = i;
  }
  failingAt = NumberOf("FAILING_AT");
  failingError = static_cast<int>(NumberOf("FAILING_ERROR"));
  failingSignal = static_cast<int>(NumberOf("FAILING_SIGNAL"));
  failingOn = std::getenv("FAILING_ON") != nullptr;
  failingProcess = std::getenv("FAILING_CHILD") != nullptr ? 1 : 0;
  if (const char* const path = std::getenv("FAILING_COUNTS")) {
    const long file = syscall(SYS_openat, AT_FDCWD, path, O_RDWR);
    const long map =
        syscall(SYS_mmap, nullptr, sizeof ownCounts, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    syscall(SYS_close, file);
    if (map > 0) counts = reinterpret_cast<std::uint64_t*>(map);
  }
}

/// Counts a call; whether it is to fail, errno being set. A place for a debugger to stop at.
[[gnu::noinline]] bool Fails(int kind) {
  if (!begun || kind != chosen) return false;
  const std::uint64_t n = __atomic_add_fetch(&counts[process], 1, __ATOMIC_RELAXED);
  if (process != failingProcess || failingAt == 0) return false;
  if (n != failingAt && !(failingOn && n > failingAt)) return false;
  if (failingSignal != 0) {
    kill(getpid(), failingSignal);
    return false;
  }
  errno = failingError;
  return true;
}

/// The C library's function of that name.
template <typename Function>
Function* Next(Function* /*like*/, const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

bool IsShort(std::size_t size) {
  return failingError == 0 && size > 0;
}

int (*programMain)(int, char**, char**) = nullptr;

int BeginMain(int argc, char** argv, char** environment) {
  begun = true;
  return programMain(argc, argv, environment);
}

}  // namespace

// Calls the function of the C library with that name.
#define NEXT(name, ...)                           \
  static auto* const next = Next(&(name), #name); \
  return next(__VA_ARGS__)
// A function of the C library, with the result of a call that fails.
#define FUNCTION(kind, result, name, parameters, failure, ...) \
  result name parameters {                                     \
    if (Fails(kind)) return failure;                           \
    NEXT(name, __VA_ARGS__);                                   \
  }
#define OPEN_FUNCTION(name)                    \
  int name(const char* path, int flags, ...) { \
    va_list list;                              \
    va_start(list, flags);                     \
    const mode_t mode = va_arg(list, mode_t);  \
    va_end(list);                              \
    if (Fails(kOpen)) return -1;               \
    NEXT(name, path, flags, mode);             \
  }
#define READ_FUNCTION(kind, result, name, parameters, ...) \
  result name parameters {                                 \
    if (fd != STDERR_FILENO && Fails(kind)) {              \
      if (!IsShort(size)) return -1;                       \
      size = 1;                                            \
    }                                                      \
    NEXT(name, __VA_ARGS__);                               \
  }

extern "C" {

// NOLINTBEGIN(bugprone-reserved-identifier): these are names of the C library.
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
ssize_t __read_chk(int fd, void* buffer, std::size_t size, std::size_t room);

int __libc_start_main(int (*main)(int, char**, char**), int argc, char** argv, void (*init)(),
                      void (*fini)(), void (*loaderFini)(), void* stackEnd) {
  programMain = main;
  NEXT(__libc_start_main, BeginMain, argc, argv, init, fini, loaderFini, stackEnd);
}
// NOLINTEND(bugprone-reserved-identifier)

void* malloc(std::size_t size) noexcept {
  return Fails(kAlloc) ? nullptr : __libc_malloc(size);
}
void* calloc(std::size_t count, std::size_t size) noexcept {
  return Fails(kAlloc) ? nullptr : __libc_calloc(count, size);
}
void* realloc(void* block, std::size_t size) noexcept {
  return Fails(kAlloc) ? nullptr : __libc_realloc(block, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
  return Fails(kAlloc) ? nullptr : __libc_memalign(alignment, size);
}
int posix_memalign(void** block, std::size_t alignment, std::size_t size) noexcept {
  void* const made = Fails(kAlloc) ? nullptr : __libc_memalign(alignment, size);
  if (made == nullptr) return ENOMEM;
  *block = made;
  return 0;
}

OPEN_FUNCTION(open)
OPEN_FUNCTION(open64)
FUNCTION(kOpen, std::FILE*, fopen, (const char* path, const char* mode), nullptr, path, mode)
FUNCTION(kOpen, std::FILE*, fopen64, (const char* path, const char* mode), nullptr, path, mode)
FUNCTION(kOpen, DIR*, opendir, (const char* path), nullptr, path)
FUNCTION(kOpen, DIR*, fdopendir, (int fd), nullptr, fd)

READ_FUNCTION(kRead, ssize_t, read, (int fd, void* buffer, std::size_t size), fd, buffer, size)
READ_FUNCTION(kRead, ssize_t, pread, (int fd, void* buffer, std::size_t size, off_t at), fd, buffer,
              size, at)
READ_FUNCTION(kWrite, ssize_t, write, (int fd, const void* buffer, std::size_t size), fd, buffer,
              size)
READ_FUNCTION(kWrite, ssize_t, pwrite, (int fd, const void* buffer, std::size_t size, off_t at), fd,
              buffer, size, at)
ssize_t writev(int fd, const iovec* parts, int count) {
  if (Fails(kWrite)) {
    if (!IsShort(1)) return -1;
    for (; count > 0 && parts->iov_len == 0; --count) ++parts;
    return count == 0 ? 0 : syscall(SYS_write, fd, parts->iov_base, 1);
  }
  NEXT(writev, fd, parts, count);
}
std::size_t fread(void* buffer, std::size_t size, std::size_t count, std::FILE* file) {
  if (Fails(kRead) && failingError != 0) {
    file->_flags |= kIoErrSeen;
    return 0;
  }
  NEXT(fread, buffer, size, count, file);
}

ssize_t __read_chk(int fd, void* buffer, std::size_t size, std::size_t room) {
  if (Fails(kRead)) {
    if (!IsShort(size)) return -1;
    size = 1;
  }
  NEXT(__read_chk, fd, buffer, size, room);
}
FUNCTION(kRead, dirent*, readdir, (DIR * folder), nullptr, folder)

// The file is closed all the same, as the system does it.
int close(int fd) {
  const bool fails = Fails(kClose);
  const int error = errno;
  const long closed = syscall(SYS_close, fd);
  if (!fails) return static_cast<int>(closed);
  errno = error;
  return -1;
}
int fclose(std::FILE* file) {
  static auto* const next = Next(&fclose, "fclose");
  const bool fails = Fails(kClose);
  const int closed = next(file);
  if (!fails) return closed;
  errno = failingError;
  return EOF;
}

FUNCTION(kLock, int, flock, (int fd, int operation) noexcept, -1, fd, operation)
FUNCTION(kMake, int, mkdir, (const char* path, mode_t mode) noexcept, -1, path, mode)
FUNCTION(kMake, char*, mkdtemp, (char* path) noexcept, nullptr, path)
FUNCTION(kMake, int, mkostemp, (char* path, int flags), -1, path, flags)
FUNCTION(kMap, void*, mmap,
         (void* place, std::size_t size, int rights, int flags, int fd, off_t at) noexcept,
         MAP_FAILED, place, size, rights, flags, fd, at)
FUNCTION(kProcess, int, memfd_create, (const char* name, unsigned flags) noexcept, -1, name, flags)
FUNCTION(kProcess, int, pipe2, (int* ends, int flags) noexcept, -1, ends, flags)
FUNCTION(kProcess, int, dup, (int fd) noexcept, -1, fd)
FUNCTION(kProcess, int, dup2, (int fd, int other) noexcept, -1, fd, other)
FUNCTION(kProcess, pid_t, wait4, (pid_t pid, int* end, int options, rusage* used) noexcept, -1, pid,
         end, options, used)
pid_t fork() noexcept {
  static auto* const next = Next(&fork, "fork");
  if (Fails(kProcess)) return -1;
  const pid_t pid = next();
  if (pid == 0) process = 1;
  return pid;
}
FUNCTION(kRemove, int, unlink, (const char* path) noexcept, -1, path)
FUNCTION(kRemove, int, unlinkat, (int fd, const char* path, int flags) noexcept, -1, fd, path,
         flags)
FUNCTION(kRemove, int, rmdir, (const char* path) noexcept, -1, path)
FUNCTION(kRename, int, rename, (const char* from, const char* to) noexcept, -1, from, to)
FUNCTION(kRename, int, renameat2,
         (int folder, const char* from, int other, const char* to, unsigned flags) noexcept, -1,
         folder, from, other, to, flags)
FUNCTION(kRename, int, link, (const char* from, const char* to) noexcept, -1, from, to)
FUNCTION(kStat, int, stat, (const char* path, struct stat* info) noexcept, -1, path, info)
FUNCTION(kStat, int, lstat, (const char* path, struct stat* info) noexcept, -1, path, info)
FUNCTION(kStat, int, fstat, (int fd, struct stat* info) noexcept, -1, fd, info)
FUNCTION(kStat, int, fstat64, (int fd, struct stat64* info) noexcept, -1, fd, info)
FUNCTION(kStat, int, faccessat, (int fd, const char* path, int mode, int flags) noexcept, -1, fd,
         path, mode, flags)
FUNCTION(kStat, int, fchmod, (int fd, mode_t mode) noexcept, -1, fd, mode)
FUNCTION(kStat, int, fchown, (int fd, uid_t owner, gid_t group) noexcept, -1, fd, owner, group)
FUNCTION(kSync, int, fsync, (int fd), -1, fd)
FUNCTION(kSync, int, fdatasync, (int fd), -1, fd)
FUNCTION(kTruncate, int, ftruncate, (int fd, off_t size) noexcept, -1, fd, size)

}  // extern "C"
