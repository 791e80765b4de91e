// The reading of scenes by the built program: in a process of its own, confined and limited.
#include <chrono>
#include <csignal>

#include <fcntl.h>
#include <fmt/format.h>
#include <seccomp.h>
#include <simdjson.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "importer/SourceFile.h"
#include "support/ProgramRun.h"

namespace mapexport {
namespace {

void EndSoon() {
  alarm(30);
}

TEST_F(ProgramTest, TheSizeAndTheBeginningOfAFileComeFirst) {
#ifdef MAPEXPORT_SHADOW_MEMORY
  GTEST_SKIP() << "the sanitizer needs the address space";
#endif
  struct Case {
    const char* file;
    std::string beginning;
    std::uintmax_t gibibytes;
    const char* reason;
  };
  const std::vector<Case> cases{
      {"large.scene.json", "", 5, "is too large, a scene file has at most 4294967295 bytes"},
      {"zeros.scene.json", "", 3, "line 1, column 1: a value was expected"},
      {"mark.scene.json", "\xEF\xBB\xBF\n x", 3, "line 2, column 2: a value was expected"},
      {"hole.scene.json", R"({"format":"mapexport-scene",)", 3,
       "line 1, column 29: a member's name in quotes was expected"},
      {"list.scene.json", "[1,\n2 3", 3, "line 2, column 3: \",\" or \"]\" was expected"},
      {"wide.scene.json", "\xFF\xFE{", 3, "is UTF-16; a scene file is UTF-8"},
      {"zeros.kob", "", 3, "offset 0: startTag: must be the text \"BeginModel\""},
  };
  for (const auto& [file, beginning, gibibytes, reason] : cases) {
    SCOPED_TRACE(file);
    Write(work_ / file, beginning);
    fs::resize_file(work_ / file, gibibytes << 30);
    const char* const command = std::string(file).ends_with(".kob") ? "inspect" : "scene";
    const Outcome outcome = Run({command, file}, [] {
      const rlimit limit{512 << 20, 512 << 20};
      setrlimit(RLIMIT_AS, &limit);
      EndSoon();
    });
    ExpectRefusal(outcome, file, reason);
  }
}

TEST_F(ProgramTest, PipesAndDevicesAreNotWaitedFor) {
  ASSERT_EQ(mkfifo((work_ / "pipe.scene.json").c_str(), 0600), 0);
  fs::create_symlink("/dev/zero", work_ / "zero.scene.json");
  for (const std::string file : {"pipe.scene.json", "zero.scene.json"}) {
    SCOPED_TRACE(file);
    for (const Outcome& outcome :
         {Run({"export", file, "a.qob"}, EndSoon), Run({"scene", file}, EndSoon),
          Export("a.qob", {"--settings", file}, EndSoon)}) {
      ExpectRefusal(outcome, file + ": ", "not a regular file");
    }
    EXPECT_FALSE(fs::exists(work_ / "a.qob"));
    const Outcome cxp = Export("cxp.qob", {"--fresh", "--quiet", "--cxp", file}, EndSoon);
    EXPECT_EQ(cxp.status, 0);
    EXPECT_THAT(cxp.err, HasSubstr(file + ": the CXP database cannot be read"));
  }
  // Standard input is waited for, whatever it is.
  ASSERT_EQ(Export("a.qob", {"--fresh", "--seed", "1"}).status, 0);
  const auto pipeScene = [] {
    int ends[2];
    if (pipe(ends) != 0 || write(ends[1], kScene, strlen(kScene)) < 0) _exit(98);
    close(ends[1]);
    dup2(ends[0], STDIN_FILENO);
  };
  const auto openScene = [this] { dup2(open(scene_.c_str(), O_RDONLY), STDIN_FILENO); };
  fs::create_symlink("/dev/stdin", work_ / "input.scene.json");
  for (const std::function<void()>& prepare : {std::function<void()>(pipeScene), {openScene}}) {
    for (const std::string file : {"/dev/stdin", "input.scene.json"}) {
      EXPECT_EQ(Run({"export", file, "b.qob", "--fresh", "--seed", "1"}, prepare).status, 0);
      EXPECT_EQ(Content(work_ / "b.qob"), Content(work_ / "a.qob"));
    }
  }
}

// Readers of the import library end in an endless loop, a crash and a stack overflow on these.
constexpr const char* kEndless = "OFF\n353535235358 10 0\n0 0 0\n";
constexpr const char* kCrash =
    "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\n"
    "property float z\nelement face 1\nproperty list uchar int vertex_indices\nend_header\n"
    "0 0 0\n1 0 0\n0 1 0\n4 0 1 2 2000000000\n";
const std::string kDeep = R"({"asset":{"version":"2.0"},"nodes":)" + std::string(200000, '[');
// Its buffer is a pipe.
constexpr const char* kPiped =
    R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0]}],"nodes":[{"mesh":0}],
"meshes":[{"primitives":[{"attributes":{"POSITION":0}}]}],"accessors":[{"bufferView":0,"count":1,
"type":"VEC3","componentType":5126}],"bufferViews":[{"buffer":0,"byteLength":12}],
"buffers":[{"uri":"pipe","byteLength":12}]})";
TEST_F(ProgramTest, WhateverTheReaderDoesIsOneLine) {
  Write(work_ / "old.qob", "old");
  Write(work_ / "endless.off", kEndless);
  Write(work_ / "crash.ply", kCrash);
  Write(work_ / "deep.gltf", kDeep);
  Write(work_ / "refused.obj", "v 0 0 0\nf 1 2 3\n");
  Write(work_ / "piped.gltf", kPiped);
  ASSERT_EQ(mkfifo((work_ / "pipe").c_str(), 0600), 0);
  const std::vector<std::pair<std::string, std::string>> cases{
      {"endless.off", "can't be read within 1 second of processor time (--read-limit)"},
      {"crash.ply", "the reader crashed on it (Segmentation fault)"},
      {"deep.gltf", "line 1, column 200036: the text ends too early"},
      {"refused.obj", ""},
      {"piped.gltf", "buffers[0].uri: the file \"pipe\" is not a regular file"},
  };
  for (const auto& [scene, reason] : cases) {
    SCOPED_TRACE(scene);
    for (const Outcome& outcome : {Run({"export", scene, "old.qob", "--read-limit", "1"}),
                                   Run({"scene", scene, "--read-limit", "1"}, [] {
                                     std::signal(SIGCHLD, SIG_IGN);
                                     sigset_t all;
                                     sigfillset(&all);
                                     sigprocmask(SIG_SETMASK, &all, nullptr);
                                   })}) {
      ExpectRefusal(outcome, "error: " + scene + ": ", reason);
    }
  }
  EXPECT_EQ(Content(work_ / "old.qob"), "old");
}

TEST_F(ProgramTest, AReaderThatWantsAllMemoryEnds) {
#ifdef MAPEXPORT_SHADOW_MEMORY
  GTEST_SKIP() << "the sanitizer needs the address space";
#endif
  Write(work_ / "endless.off", kEndless);
  const Outcome outcome = Run({"scene", "endless.off"}, [] {
    const rlimit limit{1 << 30, 1 << 30};
    setrlimit(RLIMIT_AS, &limit);
  });
  ExpectRefusal(outcome, "endless.off: needs more memory to read than there is\n");
}

TEST_F(ProgramTest, TheReaderEndsWithTheProgram) {
  Write(work_ / "endless.off", kEndless);
  // The reader, once without a parent, becomes our child.
  ASSERT_EQ(prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0), 0);
  const pid_t program = fork();
  if (program == 0) {
    execl(MAPEXPORT_BIN_DIR "/mapexport", "mapexport", "scene", (work_ / "endless.off").c_str(),
          "--read-limit", "20", nullptr);
    _exit(99);
  }
  usleep(300'000);
  kill(program, SIGKILL);
  EXPECT_EQ(waitpid(program, nullptr, 0), program);
  int end = 0;
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
  pid_t reader = 0;
  while (reader == 0 && std::chrono::steady_clock::now() < deadline) {
    reader = waitpid(-1, &end, WNOHANG);
    usleep(10'000);
  }
  EXPECT_GT(reader, 0);
  EXPECT_TRUE(WIFSIGNALED(end) && WTERMSIG(end) == SIGKILL) << end;
}

TEST_F(ProgramTest, TheReaderIsConfinedOrItIsTold) {
  Write(work_ / "level.obj", kObject);
  Write(work_ / "level.mtl", "newmtl Red\n");
  struct Kernel {
    std::vector<const char*> lacks;
    std::string warning;
    std::string report;  ///< of its member "confinement"
  };
  const std::string none = "Function not implemented";
  for (const auto& [lacks, warning, report] :
       {Kernel{{}, "", R"("seccomp": "in force")"},
        Kernel{{"landlock_create_ruleset"},
               "was not kept from looking into other processes: no Landlock: " + none,
               R"("landlock": ")" + none},
        Kernel{{"landlock_create_ruleset", "seccomp", "prctl", "capset"},
               "was not confined: no filter of system calls: " + none,
               R"("capabilities": ")" + none},
        Kernel{{"setitimer"}, "was not limited: limits: " + none, R"("limits": ")" + none},
        Kernel{{"timer_create"},
               "might not have ended at its limits: no timer: " + none,
               R"("timer": ")" + none}}) {
    SCOPED_TRACE(lacks.size());
    const Outcome outcome = Run(
        {"export", "level.obj", "a.kob", "--fresh", "--quiet", "--report", "r.json"},
        [&names = lacks] {
          const scmp_filter_ctx filter = seccomp_init(SCMP_ACT_ALLOW);
          for (const char* name : names) {
            seccomp_rule_add(filter, SCMP_ACT_ERRNO(ENOSYS), seccomp_syscall_resolve_name(name), 0);
          }
          if (seccomp_load(filter) != 0) _exit(98);
        });
    if (outcome.status == 98) GTEST_SKIP() << "no seccomp here";
    EXPECT_EQ(outcome.status, 0);
    const std::string told = Content(work_ / "r.json");
    EXPECT_THAT(told, HasSubstr(report));
    EXPECT_THAT(outcome.err, HasSubstr(warning));
    std::size_t inForce = 0;
    for (std::size_t at = 0; (at = told.find(R"(": "in force")", at)) != std::string::npos; ++at) {
      ++inForce;
    }
    EXPECT_EQ(outcome.err.empty(), inForce == 5) << told;
    EXPECT_EQ(told.find("reader-not-confined") == std::string::npos, inForce == 5) << told;
  }
}

TEST_F(ProgramTest, RunsInAContainerAndWithoutProc) {
  Write(work_ / "level.obj", kObject);
  Write(work_ / "level.mtl", "newmtl Red\n");
  ASSERT_EQ(Export("a.kob", {"--fresh", "--seed", "1", "--report", "a.json"}).status, 0);
  const auto hashes = [this](const char* report) {
    const std::string text = Content(work_ / report);
    std::string all;
    for (std::size_t at = 0; (at = text.find("\"sha256\"", at)) != std::string::npos; ++at) {
      all += text.substr(at, text.find('\n', at) - at);
    }
    return all;
  };
  // Not root, in namespaces of its own, with a filter of system calls in force.
  const auto contain = [this](std::vector<std::string> command, bool hasProc = true) {
    return Run({}, [&] {
      const scmp_filter_ctx filter = seccomp_init(SCMP_ACT_ALLOW);
      const int landlock = seccomp_syscall_resolve_name("landlock_create_ruleset");
      seccomp_rule_add(filter, SCMP_ACT_ERRNO(ENOSYS), landlock, 0);
      if (seccomp_load(filter) != 0) _exit(98);
      // A build is found by $ORIGIN, which needs /proc; an installation has its folder's path.
      if (!hasProc) setenv("LD_LIBRARY_PATH", MAPEXPORT_BIN_DIR, 1);
      dup2(open(scene_.c_str(), O_RDONLY), STDIN_FILENO);
      std::vector<std::string> all{"bwrap",
                                   "--unshare-all",
                                   "--uid",
                                   "1000",
                                   "--ro-bind",
                                   "/",
                                   "/",
                                   "--dev",
                                   "/dev",
                                   "--bind",
                                   root_,
                                   root_,
                                   hasProc ? "--proc" : "--tmpfs",
                                   "/proc"};
      all.insert(all.end(), command.begin(), command.end());
      std::vector<char*> argv;
      for (std::string& argument : all) argv.push_back(argument.data());
      argv.push_back(nullptr);
      execvp("bwrap", argv.data());
    });
  };
  if (contain({"true"}).status != 0) {
    GTEST_SKIP() << "no bubblewrap here, or it may not make containers";
  }
  const std::string program = MAPEXPORT_BIN_DIR "/mapexport";
  const Outcome foreign = contain({program, "export", "level.obj", "b.kob", "--fresh", "--quiet"});
  EXPECT_EQ(foreign.status, 0);
  EXPECT_THAT(foreign.err, HasSubstr("processes: no Landlock: Function not implemented"));
  EXPECT_EQ(Lines(foreign.err), 1) << foreign.err;
#ifdef MAPEXPORT_SHADOW_MEMORY
  GTEST_SKIP() << "AddressSanitizer needs /proc";
#endif
  const std::string exporting = "./mapexport export \"$0\" \"$1/b.kob\" --fresh --seed 1 --no-log";
  for (const auto& [shell, from] : std::vector<std::pair<std::string, std::string>>{
           {"", scene_}, {"", "/dev/stdin"}, {"cat | ", "/dev/stdin"}}) {
    const Outcome outcome = contain({"--chdir", MAPEXPORT_BIN_DIR, "sh", "-c",
                                     shell + exporting + " --report \"$1/b.json\"", from, work_},
                                    false);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(Content(work_ / "b.kob"), Content(work_ / "a.kob"));
    // What comes from a pipe has none.
    if (shell.empty()) {
      EXPECT_EQ(hashes("b.json"), hashes("a.json"));
    }
  }
  // It is read and would be replaced.
  ExpectRefusal(
      contain({"--chdir", MAPEXPORT_BIN_DIR, "./mapexport", "scene", "/dev/stdin", "-o", scene_},
              false),
      "it is the scene itself");
}

TEST_F(ProgramTest, OfVeryManyRemarksTheTerminalShowsSome) {
  std::string scene = R"({"format":"mapexport-scene","version":1,"root":{"children":[)";
  for (int i = 0; i < 5000; ++i) {
    std::string between;
    for (int digits = i, k = 0; k < 5; ++k, digits /= 7) between += " ,;|/+&"[digits % 7];
    scene +=
        fmt::format(R"({}{{"userProperties":"climbable{}floorface"}})", i == 0 ? "" : ",", between);
  }
  Write(work_ / "a.scene.json", scene + "]}}");
  const Outcome outcome = Run({"export", "a.scene.json", "a.kob", "--fresh", "--report", "r.json"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.err,
              HasSubstr("warning: a.scene.json: 4990 more warnings like these (near-keyword)\n"));
  EXPECT_LT(Lines(outcome.err), 20);
  simdjson::dom::parser parser;
  const auto warnings = parser.load((work_ / "r.json").string())["warnings"].get_array().value();
  EXPECT_EQ(warnings.size(), 4096U + 1) << "the last one is about the output";
  EXPECT_EQ(warnings.at(4095)["count"].get_uint64().value(), 905U);
}

TEST_F(ProgramTest, TheTimeToReadFollowsTheSize) {
  for (const auto& [name, size, seconds] : {std::tuple{"missing.fbx", -1, 5U},
                                            {"a.fbx", 1, 6U},
                                            {"a.fbx", 4'000'000, 6U},
                                            {"a.fbx", 4'000'001, 7U},
                                            {"a.obj", 2'000'000'000, 45U},
                                            {"a.GLTF", 1, 45U},
                                            {"a.glb", 1, 6U}}) {
    if (size >= 0) {
      Write(work_ / name, "");
      fs::resize_file(work_ / name, static_cast<std::uintmax_t>(size));
    }
    EXPECT_EQ(ReadSeconds(work_ / name), seconds) << name << size;
  }
}

TEST_F(ProgramTest, ATerminalShowsTheStage) {
  Write(work_ / "endless.off", kEndless);
  const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
  ASSERT_EQ(grantpt(terminal), 0);
  ASSERT_EQ(unlockpt(terminal), 0);
  const auto show = [&](const char* term) {
    const int end = open(ptsname(terminal), O_RDWR | O_NOCTTY);
    Run({"scene", "endless.off", "--read-limit", "2"}, [&] {
      setenv("TERM", term, 1);
      dup2(end, STDERR_FILENO);
    });
    close(end);
    // A terminal hands on in pieces what was written to it; with nobody left to write, it ends.
    std::string text;
    for (char c = 0; read(terminal, &c, 1) == 1;) text += c;
    return text;
  };
  EXPECT_THAT(show("xterm"),
              AllOf(StartsWith("\r\x1b[Kreading: 1 s\r\x1b[K"), HasSubstr("\r\x1b[Kmapexport: ")));
  EXPECT_THAT(show("dumb"), StartsWith("mapexport: error: "));
  close(terminal);
}

}  // namespace
}  // namespace mapexport
