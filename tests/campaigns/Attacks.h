// Calls that must fail in the process that reads foreign scenes. ConfineTest tries them under each
// kind of confinement alone, TakenOver in the reader itself. They need the files a.obj and out.kob
// and the folder "empty" in the current one.
#pragma once

#include <string>

#include <fcntl.h>
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

namespace mapexport {

/// A terminal that is open.
inline std::string attackedTerminal;

template <typename... Arguments>
long Sys(long number, Arguments... arguments) {
  return syscall(number, arguments...);
}

inline long Open(const std::string& path, int flags) {
  return open(path.c_str(), flags | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0600);
}

inline std::string Parent(const char* file) {
  return "/proc/" + std::to_string(getppid()) + "/" + file;
}

inline long Mapped(const void* place) {
  return place == MAP_FAILED ? -1 : 0;
}

struct Attack {
  const char* name;
  /// How it ends under the filter of system calls, and under Landlock of that version at least: "r"
  /// it is refused, "k" the process is killed, "-" it is not what that is for.
  const char* ends;
  long (*act)();  ///< what a call returned, with errno
};

inline constexpr Attack kAttacks[] = {
    // files
    {"opens the scene to write", "rr", [] { return Open("a.obj", O_WRONLY); }},
    {"opens an output for both", "rr", [] { return Open("out.kob", O_RDWR); }},
    {"appends to an output", "rr", [] { return Open("out.kob", O_WRONLY | O_APPEND); }},
    {"truncates when opening", "rr3", [] { return Open("out.kob", O_RDONLY | O_TRUNC); }},
    {"creates a file", "rr", [] { return Open("new", O_WRONLY | O_CREAT); }},
    {"creates a file elsewhere", "rr",
     [] { return Open("/tmp/mapexport-new", O_WRONLY | O_CREAT); }},
    {"makes a nameless file", "rr", [] { return Open(".", O_TMPFILE | O_RDWR); }},
    {"opens neither way", "r-", [] { return Open("out.kob", O_ACCMODE); }},
#ifdef SYS_open
    {"open() without at", "rr", [] { return Sys(SYS_open, "out.kob", O_WRONLY); }},
#endif
    {"creat()", "rr", [] { return static_cast<long>(creat("new", 0600)); }},
    {"removes a folder", "rr", [] { return Sys(SYS_unlinkat, AT_FDCWD, "empty", AT_REMOVEDIR); }},
    {"openat2", "rr",
     [] {
       open_how how{};
       how.flags = O_WRONLY;
       return Sys(SYS_openat2, AT_FDCWD, "out.kob", &how, sizeof how);
     }},
    {"open_by_handle_at", "r-",
     [] { return Sys(SYS_open_by_handle_at, AT_FDCWD, nullptr, O_RDONLY); }},
    {"name_to_handle_at", "r-",
     [] { return Sys(SYS_name_to_handle_at, AT_FDCWD, ".", nullptr, nullptr, 0); }},
    {"truncates", "rr3", [] { return Sys(SYS_truncate, "out.kob", 0); }},
    {"removes", "rr", [] { return Sys(SYS_unlinkat, AT_FDCWD, "a.obj", 0); }},
    {"renames", "rr", [] { return Sys(SYS_renameat2, AT_FDCWD, "a.obj", AT_FDCWD, "out.kob", 0); }},
    {"exchanges", "rr",
     [] { return Sys(SYS_renameat2, AT_FDCWD, "a.obj", AT_FDCWD, "out.kob", 2); }},
    {"links", "rr", [] { return Sys(SYS_linkat, AT_FDCWD, "a.obj", AT_FDCWD, "new", 0); }},
    {"makes a link", "rr", [] { return Sys(SYS_symlinkat, "a.obj", AT_FDCWD, "new"); }},
    {"makes a folder", "rr", [] { return Sys(SYS_mkdirat, AT_FDCWD, "new", 0700); }},
    {"makes a pipe", "rr", [] { return Sys(SYS_mknodat, AT_FDCWD, "new", S_IFIFO | 0600, 0); }},
    {"changes rights", "r-", [] { return Sys(SYS_fchmodat, AT_FDCWD, "out.kob", 0777); }},
    {"changes the owner", "r-", [] { return Sys(SYS_fchownat, AT_FDCWD, "out.kob", 1, 1, 0); }},
    {"changes times", "r-", [] { return Sys(SYS_utimensat, AT_FDCWD, "out.kob", nullptr, 0); }},
    {"sets an attribute", "r-", [] { return Sys(SYS_setxattr, "out.kob", "user.a", "b", 1, 0); }},
    {"mounts", "k-", [] { return Sys(SYS_mount, ".", ".", nullptr, 4096, nullptr); }},
    {"changes its root", "r-", [] { return Sys(SYS_chroot, "."); }},
    {"watches files", "r-", [] { return Sys(SYS_inotify_init1, 0); }},
    // other processes
    {"the parent's memory to write", "rr", [] { return Open(Parent("mem"), O_RDWR); }},
    {"the parent's memory", "-r", [] { return Open(Parent("mem"), O_RDONLY); }},
    {"the parent's environment", "-r", [] { return Open(Parent("environ"), O_RDONLY); }},
    {"the parent's command line", "-r", [] { return Open(Parent("cmdline"), O_RDONLY); }},
    {"the parent's folder", "-r", [] { return Open(Parent("cwd/a.obj"), O_RDONLY); }},
    {"the list of processes", "-r", [] { return Open("/proc", O_RDONLY); }},
    {"the kernel's objects", "-r", [] { return Open("/sys", O_RDONLY); }},
    {"what services share", "-r", [] { return Open("/run", O_RDONLY); }},
    {"ptrace", "k-", [] { return Sys(SYS_ptrace, 16, getppid(), 0, 0); }},
    {"process_vm_writev", "k-",
     [] { return Sys(SYS_process_vm_writev, getppid(), 0, 0, 0, 0, 0); }},
    {"process_vm_readv", "k-", [] { return Sys(SYS_process_vm_readv, getppid(), 0, 0, 0, 0, 0); }},
    {"pidfd_open", "k-", [] { return Sys(SYS_pidfd_open, getppid(), 0); }},
    {"the parent's limits", "r-",
     [] {
       const rlimit none{0, 0};
       return Sys(SYS_prlimit64, getppid(), RLIMIT_NOFILE, &none, nullptr);
     }},
    {"the parent's priority", "r-",
     [] { return Sys(SYS_setpriority, PRIO_PROCESS, getppid(), 19); }},
    {"the parent's processors", "r-",
     [] {
       const unsigned long first = 1;
       return Sys(SYS_sched_setaffinity, getppid(), sizeof first, &first);
     }},
    {"another process", "r-", [] { return Sys(SYS_clone, SIGCHLD, 0, 0, 0, 0); }},
    {"clone3", "r-", [] { return Sys(SYS_clone3, nullptr, 0); }},
    {"another program", "kr", [] { return Sys(SYS_execve, "/bin/true", nullptr, nullptr); }},
    {"a program by descriptor", "kr",
     [] { return Sys(SYS_execveat, 0, "", nullptr, nullptr, 0x1000); }},
    {"a name space of its own", "k-", [] { return Sys(SYS_unshare, CLONE_NEWUSER); }},
    {"shared memory", "r-", [] { return Sys(SYS_shmget, 0, 4096, 0600); }},
    // signals
    {"ends the parent", "kr6", [] { return Sys(SYS_kill, getppid(), SIGTERM); }},
    {"ends it with tgkill", "kr6", [] { return Sys(SYS_tgkill, getppid(), getppid(), SIGTERM); }},
    {"signals everybody", "k-", [] { return Sys(SYS_kill, -1, 0); }},
    {"queues a signal", "k-", [] { return Sys(SYS_rt_sigqueueinfo, getppid(), SIGTERM, nullptr); }},
    {"has signals sent", "r-", [] { return static_cast<long>(fcntl(0, F_SETOWN, getppid())); }},
    // network
    {"TCP", "k-", [] { return Sys(SYS_socket, AF_INET, SOCK_STREAM, 0); }},
    {"a local socket", "k-", [] { return Sys(SYS_socket, AF_UNIX, SOCK_STREAM, 0); }},
    {"a pair of sockets", "k-",
     [] { return Sys(SYS_socketpair, AF_UNIX, SOCK_STREAM, 0, nullptr); }},
    {"a ring of calls", "k-", [] { return Sys(SYS_io_uring_setup, 1, nullptr); }},
    // terminals
    {"the terminal's keystrokes", "-r", [] { return Open(attackedTerminal, O_RDONLY); }},
    {"the terminal to write", "rr", [] { return Open(attackedTerminal, O_WRONLY); }},
    {"its own terminal", "-r", [] { return Open("/dev/tty", O_RDONLY); }},
    {"a new terminal", "-r", [] { return Open("/dev/ptmx", O_RDONLY); }},
    {"types", "r-", [] { return Sys(SYS_ioctl, 0, TIOCSTI, "a"); }},
    {"a memory file", "r-", [] { return Sys(SYS_memfd_create, "new", 0); }},
    // limits
    {"more processor time", "r-",
     [] {
       const rlimit all{RLIM_INFINITY, RLIM_INFINITY};
       return Sys(SYS_prlimit64, 0, RLIMIT_CPU, &all, nullptr);
     }},
    {"no alarm", "r-", [] { return Sys(SYS_setitimer, 0, nullptr, nullptr); }},
    {"no timer", "r-", [] { return Sys(SYS_timer_delete, 0); }},
    {"to outlive the parent", "r-", [] { return Sys(SYS_prctl, PR_SET_PDEATHSIG, 0, 0, 0, 0); }},
    // memory and rights
    {"memory to write and execute", "k-",
     [] { return Mapped(mmap(nullptr, 4096, 7, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)); }},
    {"turns memory executable", "r-",
     [] {
       void* const page = mmap(nullptr, 4096, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
       return Sys(SYS_mprotect, page, 4096, PROT_READ | PROT_EXEC);
     }},
    {"turns it writable, too", "k-", [] { return Sys(SYS_mprotect, nullptr, 4096, 7); }},
    {"maps a file to execute", "r-",
     [] {
       const int file = static_cast<int>(Open("a.obj", O_RDONLY));
       return Mapped(mmap(nullptr, 4096, PROT_READ | PROT_EXEC, MAP_PRIVATE, file, 0));
     }},
    {"rare advice", "r-", [] { return Sys(SYS_madvise, nullptr, 4096, MADV_COLD); }},
    {"pkey_mprotect", "r-", [] { return Sys(SYS_pkey_mprotect, nullptr, 0, PROT_EXEC, -1); }},
    {"another user", "k-", [] { return Sys(SYS_setresuid, 0, 0, 0); }},
    {"rights", "k-", [] { return Sys(SYS_capset, nullptr, nullptr); }},
    {"keys", "k-", [] { return Sys(SYS_keyctl, 0, 0, 0, 0, 0); }},
    {"bpf", "k-", [] { return Sys(SYS_bpf, 0, nullptr, 0); }},
    {"perf_event_open", "k-", [] { return Sys(SYS_perf_event_open, nullptr, 0, -1, -1, 0); }},
    {"userfaultfd", "k-", [] { return Sys(SYS_userfaultfd, 0); }},
    {"a call that does not exist", "r-", [] { return Sys(1000); }},
#ifdef __x86_64__
    {"a call of the x32 table", "k-", [] { return Sys(0x4000'0000 + SYS_getpid); }},
#endif
};

}  // namespace mapexport
