// Child processes: how they end, and what the one that reads foreign scenes can and can't do.
#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <linux/landlock.h>
#include <linux/openat2.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "worker/AddressSanitizer.h"
#include "worker/ConfineReader.h"
#include "worker/FilterCalls.h"
#include "worker/HandOver.h"
#include "worker/LimitProcess.h"
#include "worker/RestrictFiles.h"
#include "worker/RunInChild.h"

namespace mapexport {
namespace {

// How an attempt ends.
constexpr std::string_view kDone = "done";
constexpr std::string_view kRefused = "refused";
constexpr std::string_view kKilled = "killed";
[[maybe_unused]] constexpr std::string_view kReported = "reported";
constexpr std::string_view kAny{};

struct Attempt {
  const char* what;
  std::function<long()> act;      ///< what a system call returns, with errno
  std::string_view calls;         ///< under the filter of system calls
  std::string_view files = kAny;  ///< under Landlock, of this version at least
  long version = 1;
};

long Sys(long number, auto... arguments) {
  return syscall(number, arguments...);
}

long OpenOfParent(const std::string& name) {
  return open(("/proc/" + std::to_string(getppid()) + "/" + name).c_str(), O_RDONLY);
}

long List(const std::string& folder) {
  return opendir(folder.c_str()) == nullptr ? -1 : 0;
}

/// How `act` ends in a process that was confined before; what confinement lacks is no end of ours.
std::string_view EndOf(const std::function<std::string()>& confine,
                       const std::function<long()>& act) {
  const pid_t child = fork();
  if (child == 0) {
    signal(SIGSEGV, SIG_DFL);
    const int null = open("/dev/null", O_WRONLY);
    dup2(null, STDERR_FILENO);  // a sanitizer's report
    if (!confine().empty()) _exit(200);
    errno = 0;
    _exit(act() >= 0 ? 0 : errno == EPERM || errno == EACCES ? 100 : 101);
  }
  int end = 0;
  waitpid(child, &end, 0);
  if (WIFSIGNALED(end)) return WTERMSIG(end) == SIGSYS ? kKilled : "another signal";
  const std::map<int, std::string_view> ends{
      {0, kDone}, {1, kReported}, {100, kRefused}, {200, "not to be had"}};
  const auto known = ends.find(WEXITSTATUS(end));
  return known == ends.end() ? "failed otherwise" : known->second;
}

class ConfineTest : public testing::Test {
 protected:
  void SetUp() override {
    folder_ = testing::TempDir() + "confine-" + std::to_string(getpid());
    std::filesystem::create_directory(folder_);
    file_ = folder_ + "/file";
    other_ = folder_ + "/other";
    std::ofstream(file_) << "text";
    std::filesystem::create_directory(folder_ + "/empty");
    kept_ = memfd_create("kept", 0);
    left_ = memfd_create("left", 0);
    terminal_ = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_EQ(unlockpt(terminal_), 0);
  }
  void TearDown() override {
    std::filesystem::remove_all(folder_);
    close(kept_);
    close(left_);
    close(terminal_);
  }

  long Open(int flags) const { return open(file_.c_str(), flags, 0600); }
  std::string Reopened() const { return "/proc/self/fd/" + std::to_string(kept_); }
  std::vector<Attempt> Attempts() const;

  std::string folder_;
  std::string file_;
  std::string other_;
  int kept_ = -1;
  int left_ = -1;
  int terminal_ = -1;
};

std::vector<Attempt> ConfineTest::Attempts() const {
  const char* const file = file_.c_str();
  const char* const other = other_.c_str();
  static constexpr int kPage = 4096;
  const auto map = [](int rights) {
    return mmap(nullptr, kPage, rights, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  };
  const auto mapped = [](const void* at) { return at == MAP_FAILED ? -1L : 0L; };
  return {
      // What reading needs.
      {"read a file",
       [=, this] {
         std::ifstream in(file_);
         std::string text;
         return in >> text && text == "text" ? 0L : -1L;
       },
       kDone, kDone},
      {"list a folder",
       [=, this] {
         DIR* const listed = opendir(folder_.c_str());
         return listed != nullptr && readdir(listed) != nullptr ? 0L : -1L;
       },
       kDone, kDone},
      {"much memory, and more",
       [] {
         void* const block = std::realloc(std::malloc(1 << 20), 64 << 20);
         std::free(block);
         return block == nullptr ? -1L : 0L;
       },
       kDone, kDone},
      {"write to what is open", [=, this] { return write(kept_, "x", 1); }, kDone, kDone},
      {"its own signals", [] { return static_cast<long>(raise(SIGCHLD)); }, kDone, kDone},
      {"an exception",
       [] {
         try {
           throw std::bad_alloc();
         } catch (const std::bad_alloc&) {
           return 0L;
         }
       },
       kDone, kDone},
      // Writing files.
      {"open to write", [=, this] { return Open(O_WRONLY); }, kRefused, kRefused},
      {"open for both", [=, this] { return Open(O_RDWR | O_CLOEXEC); }, kRefused, kRefused},
      {"open to append", [=, this] { return Open(O_WRONLY | O_APPEND); }, kRefused, kRefused},
      {"open neither way", [=, this] { return Open(O_ACCMODE); }, kRefused},
      {"truncate when opening", [=, this] { return Open(O_RDONLY | O_TRUNC); }, kRefused, kRefused,
       3},
#ifdef SYS_open
      {"open() without at", [=] { return Sys(SYS_open, file, O_WRONLY); }, kRefused, kRefused},
#endif
      {"create", [=] { return open(other, O_RDONLY | O_CREAT, 0600); }, kRefused, kRefused},
      {"creat()", [=] { return creat(other, 0600); }, kRefused, kRefused},
      {"openat2()",
       [=] {
         open_how how{};
         how.flags = O_WRONLY;
         return Sys(SYS_openat2, AT_FDCWD, file, &how, sizeof how);
       },
       kRefused, kRefused},
      {"a file without a name",
       [=, this] { return open(folder_.c_str(), O_TMPFILE | O_RDWR, 0600); }, kRefused, kRefused},
      {"open anew what is open", [=, this] { return open(Reopened().c_str(), O_WRONLY); },
       kRefused},
      {"truncate", [=] { return truncate(file, 0); }, kRefused, kRefused, 3},
      {"unlink", [=] { return unlink(file); }, kRefused, kRefused},
      {"rename", [=] { return rename(file, other); }, kRefused, kRefused},
      {"link", [=] { return link(file, other); }, kRefused, kRefused},
      {"symlink", [=] { return symlink(file, other); }, kRefused, kRefused},
      {"mkdir", [=] { return mkdir(other, 0700); }, kRefused, kRefused},
      {"rmdir", [=, this] { return rmdir((folder_ + "/empty").c_str()); }, kRefused, kRefused},
      {"mknod", [=] { return mknod(other, S_IFIFO | 0600, 0); }, kRefused, kRefused},
      {"chmod", [=] { return chmod(file, 0600); }, kRefused},
      {"chown", [=] { return chown(file, getuid(), getgid()); }, kRefused},
      {"utimes", [=] { return utimensat(AT_FDCWD, file, nullptr, 0); }, kRefused},
      {"setxattr", [=] { return setxattr(file, "user.a", "b", 1, 0); }, kRefused},
      {"a file in memory", [] { return memfd_create("x", 0); }, kRefused},
      // Other processes and machines.
      {"socket", [] { return Sys(SYS_socket, AF_INET, SOCK_STREAM, 0); }, kKilled},
      {"local socket", [] { return Sys(SYS_socket, AF_UNIX, SOCK_STREAM, 0); }, kKilled},
      {"connect", [] { return Sys(SYS_connect, 0, nullptr, 0); }, kKilled},
      {"another program",
       [] {
         char name[] = "/bin/true";
         char* arguments[] = {name, nullptr};
         return execv(name, arguments);
       },
       kKilled, kRefused},
      {"another process",
       [] {
         const pid_t child = fork();
         if (child == 0) _exit(0);
         return child;
       },
       kRefused, kDone},
      {"a thread",
       [] {
         try {
           std::thread([] {}).join();
         } catch (const std::system_error&) {
           errno = EPERM;
           return -1L;
         }
         return 0L;
       },
       kRefused, kDone},
      {"ptrace", [] { return ptrace(PTRACE_TRACEME, 0, nullptr, nullptr); }, kKilled},
      {"another's memory",
       [] { return Sys(SYS_process_vm_writev, getppid(), nullptr, 0, nullptr, 0, 0); }, kKilled},
      {"signal the parent", [] { return kill(getppid(), 0); }, kKilled, kRefused, 6},
      {"signal all", [] { return kill(-1, 0); }, kKilled},
      // What can be read is files of people's, not what the system shows of itself.
      {"the parent's memory, as a file", [] { return OpenOfParent("mem"); }, kAny, kRefused},
      {"the parent's command line", [] { return OpenOfParent("cmdline"); }, kAny, kRefused},
      {"who is there", [] { return List("/proc"); }, kAny, kRefused},
      {"a terminal", [=, this] { return open(ptsname(terminal_), O_RDONLY | O_NOCTTY); }, kAny,
       kRefused},
      {"a device", [] { return open("/dev/zero", O_RDONLY); }, kAny, kRefused},
      {"what services share", [] { return List("/run"); }, kAny, kRefused},
      {"the kernel's settings", [] { return List("/sys"); }, kAny, kRefused},
      // Memory that is executable, or would be gone.
      {"rare advice", [=] { return madvise(map(PROT_READ), kPage, MADV_COLD); }, kRefused},
      {"map to write and execute", [=] { return mapped(map(PROT_READ | PROT_WRITE | PROT_EXEC)); },
       kKilled},
      {"turn executable and writable",
       [=] { return mprotect(map(PROT_READ), kPage, PROT_WRITE | PROT_EXEC); }, kKilled},
      {"turn executable",
       [=] { return mprotect(map(PROT_READ | PROT_WRITE), kPage, PROT_READ | PROT_EXEC); },
       kRefused},
      {"map a file to execute",
       [=, this] {
         return mapped(mmap(nullptr, kPage, PROT_READ | PROT_EXEC, MAP_PRIVATE,
                            static_cast<int>(Open(O_RDONLY)), 0));
       },
       kRefused},
      // Limits.
      {"a pipe",
       [] {
         int ends[2];
         return pipe2(ends, 0);
       },
       kAddressSanitizer ? kDone : kRefused},
      {"ask for a limit",
       [] {
         rlimit limit{};
         return getrlimit(RLIMIT_CPU, &limit);
       },
       kDone, kDone},
      {"set a limit",
       [] {
         const rlimit limit{RLIM_INFINITY, RLIM_INFINITY};
         return setrlimit(RLIMIT_CPU, &limit);
       },
       kRefused},
      {"turn off the alarm",
       [] {
         errno = 0;
         alarm(0);
         return errno == 0 ? 0L : -1L;
       },
       kRefused},
      // The kernel, rights.
      {"setuid", [] { return Sys(SYS_setuid, 0); }, kKilled},
      {"mount", [] { return Sys(SYS_mount, nullptr, nullptr, nullptr, 0, nullptr); }, kKilled},
      {"bpf", [] { return Sys(SYS_bpf, 0, nullptr, 0); }, kKilled},
      {"keyctl", [] { return Sys(SYS_keyctl, 0, 0, 0, 0, 0); }, kKilled},
      {"userfaultfd", [] { return Sys(SYS_userfaultfd, 0); }, kKilled},
      {"io_uring", [] { return Sys(SYS_io_uring_setup, 0, nullptr); }, kKilled},
      {"a call that does not exist yet", [] { return Sys(1000); }, kRefused},
#ifdef __x86_64__
      {"a call of the x32 table", [] { return Sys(0x4000'0000 + SYS_getpid); }, kKilled},
#endif
#ifdef __SANITIZE_ADDRESS__
      {"a fault that the sanitizer sees",
       [] {
         const std::vector<char> bytes(1);
         const char* volatile at = bytes.data();
         return static_cast<long>(at[1]);
       },
       kReported, kReported},
#endif
  };
}

TEST_F(ConfineTest, TheFilterOfSystemCalls) {
  if (EndOf(FilterCalls, [] { return 0; }) == "not to be had") GTEST_SKIP() << "no seccomp here";
  for (const Attempt& attempt : Attempts()) {
    if (attempt.calls == kAny) continue;
    EXPECT_EQ(EndOf(FilterCalls, attempt.act), attempt.calls) << attempt.what;
  }
}

TEST_F(ConfineTest, Landlock) {
  const long version =
      syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
  if (version < 1) GTEST_SKIP() << "no Landlock here";
  for (const Attempt& attempt : Attempts()) {
    if (attempt.files == kAny || version < attempt.version) continue;
    EXPECT_EQ(EndOf([this] { return RestrictFiles(file_); }, attempt.act), attempt.files)
        << attempt.what;
  }
  // A scene's folder may be anywhere, and links may lead there; not all that is around it is open.
  const std::string there = "/dev/shm/confine-" + std::to_string(getpid());
  std::filesystem::create_directories(there + "/level/parts");
  for (const char* name : {"/level/scene", "/level/parts/beside", "/other"}) {
    std::ofstream(there + name) << "text";
  }
  std::filesystem::create_symlink(there + "/level", folder_ + "/way");
  std::filesystem::create_symlink(there + "/level/scene", folder_ + "/scene");
  const auto reads = [](const std::string& scene, const std::string& path) {
    return EndOf([&] { return RestrictFiles(scene); },
                 [&] { return open(path.c_str(), O_RDONLY); });
  };
  for (const std::string& folder : {there + "/level", folder_ + "/way"}) {
    EXPECT_EQ(reads(folder + "/scene", folder + "/scene"), kDone);
    EXPECT_EQ(reads(folder + "/scene", folder + "/parts/beside"), kDone);
    EXPECT_EQ(reads(folder + "/scene", there + "/other"), kRefused);
  }
  EXPECT_EQ(reads(folder_ + "/scene", folder_ + "/scene"), kDone);
  EXPECT_EQ(reads(folder_ + "/scene", there + "/level/parts/beside"), kRefused);
  EXPECT_EQ(reads("/scene", there + "/other"), kRefused);
  EXPECT_EQ(reads("/dev/null", ptsname(terminal_)), kRefused);
  std::filesystem::remove_all(there);
}

TEST_F(ConfineTest, AllLeaveWhatReadingNeedsAndNoMore) {
  // What /proc shows of the process can't be opened afterwards.
  int environment = -1;
  int ownStatus = -1;
  const auto confine = [&, this] {
    environment = open("/proc/self/environ", O_RDONLY);
    ownStatus = open("/proc/self/status", O_RDONLY);
    ConfineReader(file_, std::array{kept_, environment, ownStatus},
                  {.fileSize = 1 << 20, .openFiles = 64});
    return std::string();
  };
  for (const Attempt& attempt : Attempts()) {
    if (attempt.calls != kDone) continue;
    EXPECT_EQ(EndOf(confine, attempt.act), "done") << attempt.what;
  }
  const auto content = [](int file) {
    std::string text(1 << 16, ' ');
    text.resize(static_cast<std::size_t>(std::max<ssize_t>(0, read(file, text.data(), 1 << 16))));
    return text;
  };
  const std::vector<std::pair<const char*, std::function<bool()>>> left{
      {"no other descriptor", [this] { return fcntl(left_, F_GETFD) == -1 && errno == EBADF; }},
      {"few descriptors",
       [this] {
         int last = 0;
         for (int i = 0; i < 100 && last >= 0; ++i) last = static_cast<int>(Open(O_RDONLY));
         return last < 0 && errno == EMFILE;
       }},
      {"no environment",
       [&] {
         const std::string shown = content(environment);
         return getenv("PATH") == nullptr && shown.find_first_not_of('\0') == std::string::npos;
       }},
      {"no capability but that to read",
       [&] {
         const std::string status = content(ownStatus);
         const auto numberOf = [&status](const std::string& name) {
           return std::stoull(status.substr(status.find(name) + name.size()), nullptr, 16);
         };
         const auto may = numberOf("CapPrm:");
         return (may == 0 || may == 1U << CAP_DAC_READ_SEARCH || may == 1U << CAP_DAC_OVERRIDE) &&
                numberOf("CapEff:") == may;
       }},
      {"what root may read",
       [&] {
         return geteuid() != 0 || content(open((folder_ + "/others").c_str(), O_RDONLY)) == "text";
       }},
  };
  std::filesystem::copy_file(file_, folder_ + "/others");
  chmod((folder_ + "/others").c_str(), 0600);
  if (geteuid() == 0) {
    ASSERT_EQ(chown((folder_ + "/others").c_str(), 65534, 65534), 0);
  }
  for (const auto& [what, holds] : left) {
    EXPECT_EQ(EndOf(confine, [&holds = holds] { return holds() ? 0 : -1; }), "done") << what;
  }
}

TEST_F(ConfineTest, HoweverAChildEndsItsParentKnows) {
  struct Row {
    const char* what;
    std::function<std::string(FdOutput& output)> run;
    ChildEnd end;
    int number;
    std::string message;
    std::string output = {};
  };
  const auto write = [](FdOutput& output, std::string_view text) {
    output.sputn(text.data(), static_cast<std::streamsize>(text.size()));
  };
  const auto runOut = [] { throw std::bad_alloc(); };
  const std::string tooLong(kLongestMessage + 1, 'a');
  signal(SIGXFSZ, SIG_IGN);
  for (const bool confined : {false, true}) {
    for (const Row& row : {
             Row{"done", [&](FdOutput& output) { return write(output, "text"), "message"; },
                 ChildEnd::kDone, 0, "message", "ext"},
             Row{"refused", [](auto&) -> std::string { throw std::runtime_error("no"); },
                 ChildEnd::kRefused, 71, "no"},
             Row{"refused at length",
                 [](auto&) -> std::string { throw std::runtime_error(std::string(9000, 'a')); },
                 ChildEnd::kRefused, 71, std::string(8192, 'a') + "..."},
             Row{"memory", [=](auto&) { return runOut(), ""; }, ChildEnd::kMemoryRanOut, 72, ""},
             Row{"memory where nothing may be thrown", [=](auto&) noexcept { return runOut(), ""; },
                 ChildEnd::kMemoryRanOut, 72, ""},
             Row{"a large output",
                 [&](FdOutput& output) { return write(output, std::string(2 << 20, 'a')), ""; },
                 ChildEnd::kCannotHandOver, 73, "File too large", std::string(100, 'a')},
             Row{"a long message", [&](auto&) { return tooLong; }, ChildEnd::kCannotHandOver, 73,
                 "Message too long"},
             Row{"another status", [](auto&) -> std::string { _exit(74); }, ChildEnd::kOtherStatus,
                 74, ""},
             Row{"a crash", [](auto&) { return raise(SIGBUS), ""; }, ChildEnd::kSignal, SIGBUS, ""},
             Row{"waiting", [](auto&) { return sleep(30), ""; }, ChildEnd::kSignal, SIGALRM, ""},
         }) {
      SCOPED_TRACE(row.what);
      ChildTask task;
      task.run = row.run;
      task.limits = {.clockSeconds = 1, .fileSize = 1 << 20};
      if (confined) task.confinedTo = file_;
      const ChildOutcome outcome = RunInChild(task);
      EXPECT_EQ(outcome.end, row.end);
      EXPECT_EQ(outcome.number, row.number);
      EXPECT_EQ(outcome.message, row.message);
      EXPECT_EQ(BytesOf(outcome.output, 1, 100), row.output);
      EXPECT_EQ(outcome.confinement.has_value(), confined && row.end == ChildEnd::kDone);
    }
  }
}

TEST_F(ConfineTest, TheMemoryIsThatOfTheGroups) {
  const std::uint64_t all = MemoryLimit("/none", "/none");
  std::filesystem::create_directories(folder_ + "/outer/inner");
  const auto write = [this](const char* name, const char* text) {
    std::ofstream(folder_ + name) << text;
  };
  write("/memory.max", "max\n");
  write("/outer/memory.max", "1000\n");
  write("/outer/inner/memory.max", "2000\n");
  for (const auto& [group, memory] :
       {std::pair("4:memory:/outer\n0::/outer/inner\n", std::uint64_t{1000}),
        {"0::/outer/gone\n", 1000},
        {"0::/\n", all},
        {"0::/../outer\n", all},
        {"4:memory:/outer\n", all},
        {"0::", all},
        {"", all}}) {
    write("/group", group);
    EXPECT_EQ(MemoryLimit(folder_ + "/group", folder_), memory) << group;
  }
  write("/memory.max", "500\n");
  EXPECT_EQ(MemoryLimit("/none", folder_), 500U);  // all that a container sees
}

}  // namespace
}  // namespace mapexport
