// Child processes: how they end, and what the one that reads foreign scenes can and can't do.
#include <cerrno>
#include <csignal>
#include <functional>
#include <new>
#include <stdexcept>

#include <linux/capability.h>
#include <linux/landlock.h>
#include <sys/wait.h>

#include "campaigns/Attacks.h"
#include "support/Testing.h"
#include "worker/ConfineReader.h"
#include "worker/FilterCalls.h"
#include "worker/HandOver.h"
#include "worker/LimitProcess.h"
#include "worker/RestrictFiles.h"
#include "worker/RunInChild.h"

#ifdef MAPEXPORT_SHADOW_MEMORY
/// Names are looked up by another program, which no confined process may start.
extern "C" const char* __asan_default_options() {
  return "symbolize=0";
}
#endif

namespace mapexport {
namespace {

// How an attempt ends.
constexpr std::string_view kDone = "done";
constexpr std::string_view kRefused = "refused";
constexpr std::string_view kKilled = "killed";
[[maybe_unused]] constexpr std::string_view kReported = "reported";

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
    fs::current_path(folder_);
    Write("a.obj", "text");
    Write("out.kob", "text");
    fs::create_directory("empty");
    kept_ = memfd_create("kept", 0);
    left_ = memfd_create("left", 0);
    terminal_ = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_EQ(unlockpt(terminal_), 0);
    attackedTerminal = ptsname(terminal_);
  }
  void TearDown() override {
    fs::current_path("/");
    for (const int file : {kept_, left_, terminal_}) close(file);
  }

  /// What reading needs, under any confinement.
  void ExpectReading(const std::function<std::string()>& confine) const;

  const TempFolder temporary_;
  const std::string folder_ = temporary_.Path();
  const std::string file_ = folder_ + "/a.obj";
  int kept_ = -1;
  int left_ = -1;
  int terminal_ = -1;
};

void ConfineTest::ExpectReading(const std::function<std::string()>& confine) const {
  const std::pair<const char*, std::function<long()>> needed[] = {
      {"read a file", [this] { return Content(file_) == "text" ? 0L : -1L; }},
      {"list a folder", [this] { return Names(folder_).size() > 2 ? 0L : -1L; }},
      {"much memory, and more",
       [] {
         void* const block = std::realloc(std::malloc(1 << 20), 64 << 20);
         std::free(block);
         return block == nullptr ? -1L : 0L;
       }},
      {"write to what is open", [this] { return write(kept_, "x", 1); }},
      {"its own signals", [] { return static_cast<long>(raise(SIGCHLD)); }},
      {"an exception",
       [] {
         try {
           throw std::bad_alloc();
         } catch (const std::bad_alloc&) {
           return 0L;
         }
       }},
      {"ask for a limit", [] {
         rlimit limit{};
         return static_cast<long>(getrlimit(RLIMIT_CPU, &limit));
       }}};
  for (const auto& [what, act] : needed) EXPECT_EQ(EndOf(confine, act), kDone) << what;
#ifdef MAPEXPORT_SHADOW_MEMORY
  const auto fault = [] {
    const std::vector<char> bytes(1);
    const char* volatile at = bytes.data();
    return static_cast<long>(at[1]);
  };
  EXPECT_EQ(EndOf(confine, fault), kReported) << "a fault that the sanitizer sees";
#endif
}

TEST_F(ConfineTest, TheFilterOfSystemCalls) {
  if (EndOf(FilterCalls, [] { return 0; }) == "not to be had") GTEST_SKIP() << "no seccomp here";
  ExpectReading(FilterCalls);
  for (const Attack& attack : kAttacks) {
    if (attack.ends[0] == '-') continue;
    EXPECT_EQ(EndOf(FilterCalls, attack.act), attack.ends[0] == 'k' ? kKilled : kRefused)
        << attack.name;
  }
}

TEST_F(ConfineTest, Landlock) {
  const long version =
      syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
  if (version < 1) GTEST_SKIP() << "no Landlock here";
  const auto confine = [this] { return RestrictFiles(file_); };
  ExpectReading(confine);
  for (const Attack& attack : kAttacks) {
    const char* const ends = attack.ends;
    if (ends[1] == '-' || (ends[2] != 0 && version < ends[2] - '0')) continue;
    EXPECT_EQ(EndOf(confine, attack.act), kRefused) << attack.name;
  }
  // A scene's folder may be anywhere, and links may lead there; not all that is around it is open.
  const std::string there = "/dev/shm/confine-" + std::to_string(getpid());
  fs::create_directories(there + "/level/parts");
  for (const char* name : {"/level/scene", "/level/parts/beside", "/other"}) {
    Write(there + name, "text");
  }
  fs::create_symlink(there + "/level", folder_ + "/way");
  fs::create_symlink(there + "/level/scene", folder_ + "/scene");
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
  fs::remove_all(there);
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
  ExpectReading(confine);
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
         for (int i = 0; i < 100 && last >= 0; ++i) last = open(file_.c_str(), O_RDONLY);
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
  fs::copy_file(file_, folder_ + "/others");
  chmod((folder_ + "/others").c_str(), 0600);
  if (geteuid() == 0) {
    ASSERT_EQ(chown((folder_ + "/others").c_str(), 65534, 65534), 0);
  }
  for (const auto& [what, holds] : left) {
    EXPECT_EQ(EndOf(confine, [&check = holds] { return check() ? 0 : -1; }), "done") << what;
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
             Row{"a long message", [&](auto&) { return std::string(tooLong); },
                 ChildEnd::kCannotHandOver, 73, "Message too long"},
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

TEST_F(ConfineTest, MemoryAndProcessorsAreThoseOfTheGroups) {
  const std::uint64_t all = MemoryLimit("/none", "/none");
  fs::create_directories(folder_ + "/outer/inner");
  const auto write = [this](const char* name, const char* text) { Write(folder_ + name, text); };
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
  write("/cpu.max", "150000 100000\n");
  write("/outer/cpu.max", "max 100000\n");
  write("/group", "0::/outer\n");
  EXPECT_EQ(ProcessorLimit(folder_ + "/group", folder_),
            std::min<std::size_t>(ProcessorLimit("/none", "/none"), 2));
  write("/cpu.max", "1000 100000\n");
  EXPECT_EQ(ProcessorLimit(folder_ + "/group", folder_), 1U);
}

}  // namespace
}  // namespace mapexport
