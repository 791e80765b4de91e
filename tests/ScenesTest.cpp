// Exports of several scenes in one call.
#include <csignal>
#include <regex>

#include <sys/resource.h>
#include <sys/time.h>
#include <unistd.h>

#include "support/ProgramRun.h"
#include "worker/RunChildren.h"

namespace mapexport {
namespace {

class ScenesTest : public ProgramTest {
 protected:
  ScenesTest() {
    Write(work_ / "level.obj", kObject);
    Write(work_ / "level.mtl", "newmtl Red\nKd 1 0 0\n");
    Write(work_ / "b.scene.json", kScene);
    Write(work_ / "bad.fbx", "no FBX");
  }

  /// The command line that exports that many scenes.
  std::vector<std::string> LineOfMany(int count) {
    std::vector<std::string> line{"export", "--output-folder", "out", "--no-log", "--quiet"};
    for (int i = 0; i < count; ++i) {
      line.push_back("s" + std::to_string(i) + ".scene.json");
      fs::copy_file(work_ / "b.scene.json", work_ / line.back());
    }
    return line;
  }
};

TEST_F(ScenesTest, EachIsExportedAsIfAlone) {
  fs::create_directory(work_ / "out");
  Write(work_ / "out/bad.qob", "old");
  const std::vector<std::string> options{"--seed", "1", "--weld-distance", "0.5"};
  std::vector<std::string> line{"export",          "level.obj", "bad.fbx",   "b.scene.json",
                                "--output-folder", "out",       "--layout",  "qob",
                                "--report",        "-",         "--jobs",    "3",
                                "--cxp",           "none",      "--depfile", "d"};
  line.insert(line.end(), options.begin(), options.end());
  const Outcome outcome = Run(line);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err,
              AllOf(HasSubstr("error: bad.fbx: "), HasSubstr("note: out/b.qob: 3 triangles"),
                    HasSubstr("warning: b.scene.json: " + (work_ / "none").string()),
                    HasSubstr("note: 2 of 3 scenes exported to out in "),
                    EndsWith("error: 1 of 3 scenes not exported: bad.fbx\n")));
  EXPECT_THAT(Content(work_ / "d"), AllOf(HasSubstr("out/level.qob: level.obj \\\n  level.mtl\n"),
                                          HasSubstr("out/b.qob: b.scene.json\n")));
  EXPECT_EQ(Content(work_ / "out/bad.qob"), "old");
  EXPECT_EQ(std::distance(fs::directory_iterator(work_ / "out"), {}), 5);  // 3 files and 2 logs
  const std::string& report = outcome.out;
  EXPECT_THAT(report, StartsWith(R"({"format": "mapexport-report-list", "runs": [)"));
  EXPECT_LT(report.find("out/level.qob"), report.find("out/bad.qob"));
  EXPECT_LT(report.find("out/bad.qob"), report.find("out/b.qob"));
  EXPECT_THAT(Content(root_ / "config/mapexport/settings.reg"), HasSubstr("=\"0.500000\""));
  for (const std::string name : {"level", "b"}) {
    const std::string scene = name == "b" ? "b.scene.json" : "level.obj";
    line = {"export", scene, "alone.qob", "--quiet", "--fresh", "--no-log"};
    line.insert(line.end(), options.begin(), options.end());
    ASSERT_EQ(Run(line).status, 0);
    EXPECT_EQ(Content(work_ / ("out/" + name + ".qob")), Content(work_ / "alone.qob"));
  }
}

TEST_F(ScenesTest, IsRefusedBeforeTheFirstExport) {
  fs::create_directory(work_ / "in");
  Write(work_ / "in/b.kob", kScene);
  fs::create_symlink("b.kob", work_ / "in/level.kob");
  struct Case {
    std::vector<std::string> arguments;
    int status;
    std::string piece;
  };
  const std::vector<Case> cases{
      {{"level.obj", "in/level.glb", "--output-folder", "o"},
       2,
       "would both be exported to level.kob"},
      {{"level.obj", "b.scene.json", "c.obj"}, 2, "\"c.obj\" is one argument too many"},
      {{"level.obj"}, 2, "OUTPUT is required"},
      {{"level.obj", "a.kob", "--jobs", "2"}, 2, "--jobs needs --output-folder"},
      {{"level.obj", "--output-folder", "o", "--jobs", "0"}, 2, "at least 1"},
      {{"level.obj", "--output-folder", "o", "--log", "x"}, 2, "exclude each other"},
      {{"level.obj", "--output-folder", "bad.fbx"}, 1, "bad.fbx: the folder can't be made"},
      {{"b.scene.json", "in/b.kob", "--output-folder", "in"}, 2, "would both be"},
      {{"b.scene.json", "--output-folder", "in", "--keywords", "in/b.kob"},
       1,
       "in/b.kob: cannot be"},
      {{"b.scene.json", "level.obj", "--output-folder", "in"}, 1, "it is the output for b.scene"},
      {{"b.scene.json", "--output-folder", "o", "--report", "o/b.kob"}, 1, "it is the output for"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.piece);
    std::vector<std::string> line{"export"};
    line.insert(line.end(), c.arguments.begin(), c.arguments.end());
    const Outcome outcome = Run(line);
    EXPECT_EQ(outcome.status, c.status);
    EXPECT_THAT(outcome.err, HasSubstr(c.piece));
    EXPECT_TRUE(!fs::exists(work_ / "o") || fs::is_empty(work_ / "o"));
    EXPECT_EQ(Content(work_ / "in/b.kob"), kScene);
  }
  // Side files are known only when the scenes are read.
  EXPECT_EQ(Run({"export", "level.obj", "--output-folder", "o", "--depfile", "level.mtl"}).status,
            1);
  EXPECT_THAT(Content(work_ / "level.mtl"), StartsWith("newmtl"));
}

TEST_F(ScenesTest, OptionsBesideTheScenesAreInputsAndTheFirstOnesAreRemembered) {
  for (const std::string folder : {"p", "q"}) {
    fs::create_directory(work_ / folder);
    fs::copy_file(work_ / "b.scene.json", work_ / folder / (folder + ".scene.json"));
    Write(work_ / folder / "mapexport.toml",
          folder == "p" ? "voxel-size = 111\n" : "voxel-size = 222\nkeywords = \"p.kob\"\n");
  }
  Write(work_ / "q/p.kob", "Floor: climbable\n");
  std::vector<std::string> line{"export",         "bad.fbx",         "p/p.scene.json",
                                "q/q.scene.json", "--output-folder", "q"};
  EXPECT_THAT(Run(line).err, HasSubstr("q/p.kob: cannot be written: it is the file of --keywords"));
  EXPECT_EQ(Content(work_ / "q/p.kob"), "Floor: climbable\n");
  line.back() = "o";
  for (const char* option : {"--report", "--depfile"}) {
    line.insert(line.end(), {option, "q/mapexport.toml"});
    EXPECT_THAT(Run(line).err, HasSubstr("it is the file of options itself"));
    line.resize(line.size() - 2);
  }
  EXPECT_FALSE(fs::exists(work_ / "o/p.kob"));
  EXPECT_EQ(Run(line).status, 1);
  EXPECT_THAT(Content(root_ / "config/mapexport/settings.reg"), HasSubstr("=\"111.000000\""));
}

TEST_F(ScenesTest, CopiedTexturesDoNotReplaceThoseOfOtherScenes) {
  std::vector<std::string> line{"export", "--output-folder", "out", "--copy-textures",
                                "t",      "--jobs",          "6",   "--no-log",
                                "--quiet"};
  constexpr std::size_t kBytes = 1 << 20;
  for (const char digit : std::string("012345")) {
    const std::string folder{'d', digit};
    fs::create_directory(work_ / folder);
    Write(work_ / folder / (folder + ".obj"), kObject);
    Write(work_ / folder / "level.mtl", "newmtl Red\nmap_Kd wood.png\n");
    Write(work_ / folder / "wood.png", std::string(kBytes, digit));
    line.push_back(folder + "/" + folder + ".obj");
  }
  const Outcome outcome = Run(line);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(Lines(outcome.err), 5) << outcome.err;
  EXPECT_THAT(outcome.err, HasSubstr("is not copied: another file with this name is there"));
  const std::string copy = Content(work_ / "t/wood.png");
  EXPECT_TRUE(copy == std::string(kBytes, copy.at(0)));
}

TEST_F(ScenesTest, ManyAtOnceDoNotTakeEachOthersFiles) {
#ifdef MAPEXPORT_SHADOW_MEMORY
  GTEST_SKIP() << "sanitizers examine memory through a pipe, for which no file is left";
#endif
  std::vector<std::string> line = LineOfMany(60);
  line.insert(line.end(), {"--jobs", "9999"});
  const Outcome outcome = Run(line, [] {
    const rlimit files{32, 32};
    setrlimit(RLIMIT_NOFILE, &files);
  });
  EXPECT_EQ(outcome.status, 0) << outcome.err;
}

TEST_F(ScenesTest, AnInterruptedRunCountsWhatIsInItsPlace) {
  const std::vector<std::string> line = LineOfMany(40);
  for (int tries = 1; tries <= 10; ++tries) {
    fs::remove_all(work_ / "out");
    const Outcome outcome = Run(line, [tries] {
      const itimerval timer{{}, {0, 10'000 * tries}};
      setitimer(ITIMER_REAL, &timer, nullptr);
    });
    if (outcome.status == 0) break;
    if (outcome.err.empty()) continue;  // before it was ready
    ASSERT_EQ(outcome.status, 128 + SIGALRM);
    std::smatch match;
    ASSERT_TRUE(std::regex_search(outcome.err, match, std::regex("(\\d+) of 40"))) << outcome.err;
    EXPECT_EQ(Names(work_ / "out").size(), std::stoul(match[1]));
  }
}

TEST_F(ScenesTest, ChildrenKeepToTheirLimitsAndEndWithTheirParent) {
  std::vector<std::size_t> ended;
  std::vector<ChildEnd> ends;
  ChildrenTask tasks;
  tasks.count = 3;
  tasks.mostAtOnce = 3;
  tasks.memory = 10;
  tasks.memoryOf = [](std::size_t index) { return index == 1 ? 20 : 4; };
  tasks.ended = [&](std::size_t index, const ChildOutcome& outcome) {
    ended.push_back(index);
    ends.push_back(outcome.end);
  };
  // The second one needs more memory than there is: it runs alone.
  tasks.task = [](std::size_t index, const std::function<void()>&) {
    ChildTask task;
    task.run = [index](FdOutput&) -> std::string {
      if (index == 0) usleep(100'000);
      if (index == 1) raise(SIGSEGV);
      return "";
    };
    return task;
  };
  EXPECT_EQ(RunChildren(tasks), 0);
  EXPECT_THAT(ended, ElementsAre(0, 1, 2));
  EXPECT_THAT(ends, ElementsAre(ChildEnd::kDone, ChildEnd::kSignal, ChildEnd::kDone));

  // The first has computed, so the second starts although one at once is allowed.
  ended.clear();
  tasks.memory = 100;
  tasks.mostAtOnce = 1;
  tasks.task = [parent = getpid()](std::size_t index, const std::function<void()>& computed) {
    ChildTask task;
    task.run = [=](FdOutput&) -> std::string {
      if (index == 0) computed();
      if (index == 1) kill(parent, SIGTERM);
      return std::string(1, static_cast<char>(pause()));
    };
    return task;
  };
  EXPECT_EQ(RunChildren(tasks), SIGTERM);
  EXPECT_THAT(ended, IsEmpty());
}

}  // namespace
}  // namespace mapexport
