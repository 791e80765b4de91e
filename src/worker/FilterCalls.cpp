#include "worker/FilterCalls.h"

#include <cerrno>
#include <memory>
#include <system_error>

#include <fcntl.h>
#include <seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <unistd.h>

#include "system/RunError.h"
#include "worker/ShadowMemory.h"

namespace mapexport {
namespace {

// The list names allowed calls, because Linux gets new ones every year, and reading does not need a
// call that nobody has looked at. Names that the library or this machine does not know are skipped.
constexpr const char* kAllowed[] = {
    // files, for reading, and what is open
    "access", "close", "faccessat", "faccessat2", "fadvise64", "fstat", "getcwd", "getdents64",
    "lseek", "lstat", "newfstatat", "pread64", "preadv", "read", "readlink", "readlinkat", "readv",
    "stat", "statx", "write", "writev",
    // memory
    "brk", "mremap", "munmap",
    // the process itself
    "exit", "exit_group", "futex", "getegid", "geteuid", "getgid", "getpid", "getppid", "getrandom",
    "getrlimit", "getrusage", "gettid", "getuid", "restart_syscall", "rt_sigaction",
    "rt_sigprocmask", "rt_sigreturn", "sched_getaffinity", "sched_yield", "sigaltstack", "sysinfo",
    "uname",
    // time, where reading it takes a system call
    "clock_getres", "clock_gettime", "clock_nanosleep", "gettimeofday", "nanosleep", "time"};

// Calls that no reader makes by mistake. Starting a thread or a process is not listed: a library
// that tries it gets an error.
constexpr const char* kAttacks[] = {
    // other machines and other processes
    "accept", "accept4", "bind", "connect", "listen", "sendmmsg", "sendmsg", "sendto", "socket",
    "socketpair", "pidfd_getfd", "pidfd_open", "pidfd_send_signal", "process_madvise",
    "process_vm_readv", "process_vm_writev", "ptrace", "rt_sigqueueinfo", "rt_tgsigqueueinfo",
    // other programs
    "execve", "execveat",
    // other permissions
    "capset", "setfsgid", "setfsuid", "setgid", "setgroups", "setns", "setregid", "setresgid",
    "setresuid", "setreuid", "setuid", "unshare",
    // the kernel
    "add_key", "bpf", "delete_module", "finit_module", "init_module", "io_uring_enter",
    "io_uring_register", "io_uring_setup", "ioperm", "iopl", "kexec_file_load", "kexec_load",
    "keyctl", "fsconfig", "fsmount", "fsopen", "fspick", "mount", "mount_setattr", "move_mount",
    "open_tree", "perf_event_open", "pivot_root", "reboot", "request_key", "swapoff", "swapon",
    "umount2", "userfaultfd"};

// The advice that C libraries' memory functions, ours (app/main/LargeBlocks) and the sanitizers
// give about their memory. Other advice can take pages out of use for the whole machine.
constexpr int kAdvice[] = {MADV_DONTNEED, MADV_FREE, MADV_HUGEPAGE, MADV_NOHUGEPAGE, MADV_DONTDUMP};

// All kernels with filters can end the thread, but only those from 4.14 on the process; there is
// one thread.
constexpr std::uint32_t kEnd = SCMP_ACT_KILL_THREAD;

// O_TMPFILE includes O_DIRECTORY, which does not write.
constexpr scmp_datum_t kWriting = O_ACCMODE | O_CREAT | O_TRUNC | (O_TMPFILE & ~O_DIRECTORY);

// Arguments of type int can have any upper half.
constexpr scmp_datum_t kInt = 0xFFFF'FFFF;

constexpr scmp_arg_cmp Masked(unsigned argument, scmp_datum_t mask, scmp_datum_t value) {
  return {argument, SCMP_CMP_MASKED_EQ, mask, value};
}

/// Collects rules. After the first rule that can't be added, the rest is skipped.
class Filter {
 public:
  Filter() : filter_(seccomp_init(SCMP_ACT_ERRNO(EPERM)), seccomp_release) {
    if (!filter_) {
      error_ = -EINVAL;
      return;
    }
    // We set "no new privileges" ourselves: the library would lose the reason of a failure.
    Note(seccomp_attr_set(filter_.get(), SCMP_FLTATR_CTL_NNP, 0));
    // The numbers of other instruction sets' calls could mean anything.
    Note(seccomp_attr_set(filter_.get(), SCMP_FLTATR_ACT_BADARCH, kEnd));
    Note(seccomp_attr_set(filter_.get(), SCMP_FLTATR_API_SYSRAWRC, 1));
  }

  void Add(std::uint32_t action, const char* name) { AddArray(action, name, 0, nullptr); }

  void Add(std::uint32_t action, const char* name, const scmp_arg_cmp& compared) {
    AddArray(action, name, 1, &compared);
  }

  /// 0, or a negated errno.
  int Load() {
    if (error_ == 0) Note(seccomp_load(filter_.get()));
    return error_;
  }

 private:
  void AddArray(std::uint32_t action, const char* name, unsigned count,
                const scmp_arg_cmp* compared) {
    const int number = seccomp_syscall_resolve_name(name);
    if (error_ != 0 || number < 0) return;
    Note(seccomp_rule_add_array(filter_.get(), action, number, count, compared));
  }
  void Note(int error) {
    if (error_ == 0) error_ = error;
  }

  std::unique_ptr<void, void (*)(scmp_filter_ctx)> filter_;
  int error_ = 0;
};

}  // namespace

std::string FilterCalls() {
#if defined(__LP64__) && (defined(__x86_64__) || defined(__aarch64__) || defined(__riscv))
  if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) return ErrnoText(errno);
  Filter filter;
  for (const char* name : kAllowed) filter.Add(SCMP_ACT_ALLOW, name);
  for (const char* name : kAttacks) filter.Add(kEnd, name);
  // Libraries write from memory to a pipe to test whether the memory exists.
  if (kShadowMemory) filter.Add(SCMP_ACT_ALLOW, "pipe2");

  filter.Add(SCMP_ACT_ALLOW, "open", Masked(1, kWriting, O_RDONLY));
  filter.Add(SCMP_ACT_ALLOW, "openat", Masked(2, kWriting, O_RDONLY));
  // F_ADD_SEALS is safe: seals can't be removed, and a sealed memory file stays as it is.
  for (const scmp_datum_t command : {scmp_datum_t{F_GETFD}, scmp_datum_t{F_SETFD},
                                     scmp_datum_t{F_GETFL}, scmp_datum_t{F_ADD_SEALS}}) {
    filter.Add(SCMP_ACT_ALLOW, "fcntl", Masked(1, kInt, command));
  }
  constexpr scmp_datum_t kBoth = PROT_WRITE | PROT_EXEC;
  for (const char* name : {"mmap", "mprotect"}) {
    filter.Add(SCMP_ACT_ALLOW, name, Masked(2, PROT_EXEC, 0));
    filter.Add(kEnd, name, Masked(2, kBoth, kBoth));
  }
  for (const int advice : kAdvice) {
    filter.Add(SCMP_ACT_ALLOW, "madvise", Masked(2, kInt, static_cast<scmp_datum_t>(advice)));
  }
  // Limits can be read, not set.
  filter.Add(SCMP_ACT_ALLOW, "prlimit64", {2, SCMP_CMP_EQ, 0, 0});
  // abort() and the sanitizers send a signal to the process itself.
  const auto self = static_cast<scmp_datum_t>(getpid());
  for (const char* name : {"kill", "tgkill", "tkill"}) {
    filter.Add(SCMP_ACT_ALLOW, name, {0, SCMP_CMP_EQ, self, 0});
    filter.Add(kEnd, name, {0, SCMP_CMP_NE, self, 0});
  }
  const int error = filter.Load();
  return error == 0 ? std::string() : ErrnoText(-error);
#else
  return "there is none for this kind of machine";
#endif
}

}  // namespace mapexport
