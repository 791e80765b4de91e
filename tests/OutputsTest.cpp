// What the program does to the files that it writes, and to those that it must not write.
#include <chrono>
#include <csignal>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "app/export/ExporterLog.h"
#include "output/OutputPlace.h"
#include "support/ProgramRun.h"

namespace mapexport {
namespace {

class OutputsTest : public ProgramTest {};

TEST_F(OutputsTest, TheLogReplacesNothingButAnOlderLog) {
  const fs::path log = work_ / "ExportDebug.txt";
  const fs::path precious = root_ / "precious";
  struct Case {
    std::string what;
    std::function<void()> prepare;
    std::vector<std::string> options = {};
    std::string output = "a.kob";
  };
  const std::vector<Case> kept{
      {"it is a link", [&] { fs::create_symlink(precious, log); }},
      {"it is a link", [&] { fs::create_symlink(root_ / "not there", log); }},
      {"it has another name, too", [&] { fs::create_hard_link(precious, log); }},
      {"it is a folder", [&] { fs::create_directory(log); }},
      {"it is not a regular file", [&] { mkfifo(log.c_str(), 0600); }},
      {"it is the CXP database itself", [&] { Write(log, "old"); }, {"--cxp", "ExportDebug.txt"}},
      {"it is the settings store itself", [&] { Write(log, ""); }, {"--settings", log}},
      {"it is the output itself", [&] {}, {}, "./ExportDebug.txt"},
      {"it is the report itself", [&] {}, {"--report", log}},
      {"it is the file of --depfile itself", [&] {}, {"--depfile", "ExportDebug.txt"}},
      {"it is the scene itself", [&] {}, {"--log", scene_}},
      {"No such file", [&] {}, {"--log", "missing/log.txt"}},
  };
  for (const Case& c : kept) {
    SCOPED_TRACE(c.what);
    Write(precious, "precious");
    c.prepare();
    const Outcome outcome = Export(c.output, c.options);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.err, AllOf(HasSubstr(": cannot be written: "), HasSubstr(c.what),
                                   HasSubstr("this export has no log"), Not(HasSubstr("(see "))));
    EXPECT_EQ(Run({"inspect", c.output}).status, 0);
    EXPECT_EQ(Content(precious), "precious");
    EXPECT_EQ(Content(scene_), kScene);
    if (fs::is_regular_file(log)) {
      EXPECT_THAT(Content(log), Not(HasSubstr("Invalid FACE")));
    }
    EXPECT_FALSE(fs::exists(root_ / "not there"));
    fs::remove_all(work_);
    fs::create_directory(work_);
  }

  // A log is placed also when the export fails after all, and keeps what a replaced file had.
  Write(log, "old");
  fs::permissions(log, fs::perms(0640));
  EXPECT_EQ(Export("a.kob", {"--fresh"},
                   [] {
                     const rlimit limit{300, 300};
                     setrlimit(RLIMIT_FSIZE, &limit);
                   })
                .status,
            1);
  EXPECT_THAT(Content(log), HasSubstr("Invalid FACE in GROUPFloor"));
  EXPECT_EQ(fs::status(log).permissions(), fs::perms(0640));
  EXPECT_THAT(Export("a.kob", {"--log", "other.txt", "--fresh"}).err,
              HasSubstr("left out (see other.txt)"));
  EXPECT_EQ(Content(work_ / "other.txt").find("Could not load CXP file"), 0U);
  fs::remove(log);
  EXPECT_THAT(Export("a.kob", {"--no-log", "--fresh"}).err, Not(HasSubstr("log")));
  EXPECT_THAT(Names(work_), UnorderedElementsAre("a.kob", "other.txt"));
}

TEST_F(OutputsTest, NoInputIsReplaced) {
  Write(work_ / "level.obj",
        "v 0 0 0\nv 10 0 0\nv 0 10 0\nmtllib level.mtl\nusemtl Red\nf 1 2 3\n");
  Write(work_ / "level.mtl", "newmtl Red\n");
  fs::create_symlink("level.obj", work_ / "link");
  fs::create_hard_link(work_ / "level.obj", work_ / "twin");
  Write(work_ / "old.cxp", "");
  Write(work_ / "given.cxp", "");
  ASSERT_EQ(Export("a.kob", {"--cxp", "old.cxp"}).status, 0);
  const fs::path settings = root_ / "config/mapexport/settings.reg";
  // Nor is one that is remembered relative to the current folder, which the exporter finds there.
  std::string relative = Content(settings);
  const std::string absolute = fs::canonical(work_).string() + "/old.cxp";
  ASSERT_NE(relative.find(absolute), std::string::npos);
  relative.replace(relative.find(absolute), absolute.size(), "old.cxp");
  Write(settings, relative);
  ASSERT_EQ(Export("a.kob", {"--depfile", "a.d"}).status, 0);
  EXPECT_THAT(Content(work_ / "a.d"), HasSubstr(" old.cxp"));

  const std::string model = Content(work_ / "a.kob");
  const std::vector<std::vector<std::string>> lines{
      {"scene", "level.obj", "-o", "level.obj"},
      {"scene", "level.obj", "-o", "link"},
      {"scene", "level.obj", "-o", "twin"},
      {"scene", "level.obj", "-o", "level.mtl"},
      {"export", "level.obj", "./link"},
      {"export", "level.obj", "level.mtl"},
      {"export", "level.obj", "b.kob", "--report", "level.mtl"},
      {"export", "level.obj", "b.kob", "--depfile", "level.mtl"},
      {"export", "level.obj", "b.kob", "--report", "../work/level.obj"},
      {"export", "level.obj", "old.cxp"},
      {"export", "level.obj", "b.kob", "--report", "old.cxp"},
      {"export", "missing.obj", "b.kob", "--report", "old.cxp"},
      {"export", "level.obj", "b.kob", "--depfile", "given.cxp", "--cxp", "given.cxp"},
      {"export", "level.obj", settings},
      {"export", "missing.obj", "b.kob", "--report", settings},
      {"export", "level.obj", "new.reg", "--settings", "./new.reg"},
      {"view", "a.kob", "-o", "a.kob"},
      {"view", "a.kob", "--compare", "level.obj", "-o", "level.obj"},
      {"view", "level.obj", "-o", "level.mtl"},
      {"picture", "level.obj", "-o", "old.cxp"},
      {"picture", "a.kob", "-o", "a.kob"},
      {"convert", "a.kob", "a.kob", "--to", "glb"},
  };
  for (const std::vector<std::string>& line : lines) {
    SCOPED_TRACE(testing::PrintToString(line));
    const Outcome run = Run(line);
    if (run.err.find("without the page") == std::string::npos) ExpectRefusal(run, "itself\n");
    EXPECT_THAT(Content(work_ / "level.obj"), StartsWith("v 0 0 0"));
    EXPECT_EQ(Content(work_ / "level.mtl"), "newmtl Red\n");
    EXPECT_EQ(Content(work_ / "old.cxp") + Content(work_ / "given.cxp"), "");
    EXPECT_EQ(Content(settings), relative);
    EXPECT_EQ(Content(work_ / "a.kob"), model);
  }
  EXPECT_FALSE(fs::exists(work_ / "b.kob"));
}

TEST_F(OutputsTest, StandardOutputIsWrittenToAndNeverReplaced) {
  ASSERT_EQ(Export("a.kob", {"--fresh"}).status, 0);
  const std::vector<std::pair<std::vector<std::string>, std::string>> lines{
      {{"export", scene_, "a.kob", "--quiet", "--report"}, "{\n \"format\": \"mapexport-report\""},
      {{"export", "missing", "a.kob", "--report"}, "{\n \"format\": \"mapexport-report\""},
      {{"scene", scene_, "-o"}, "{\n  \"format\": \"mapexport-scene\""},
      {{"convert", "a.kob", "--to", "glb"}, "glTF"},
      {{"convert", "a.kob", "--to", "obj"}, "# File"},
      {{"convert", "a.kob", "--to", "stl"}, ""},
      {{"picture", "a.kob", "-o"}, "\x89PNG"},
  };
  for (const auto& [line, begin] : lines) {
    for (const char* const name : {"-", "/dev/stdout"}) {
      std::vector<std::string> whole = line;
      whole.insert(line[0] == "convert" ? whole.begin() + 2 : whole.end(), name);
      SCOPED_TRACE(testing::PrintToString(whole));
      // As a shell does it for ">>".
      const Outcome outcome = Run(whole, [&] {
        dup2(open((root_ / "out").c_str(), O_WRONLY | O_APPEND), STDOUT_FILENO);
        if (write(STDOUT_FILENO, "log\n", 4) != 4) _exit(98);
      });
      EXPECT_EQ(outcome.status, line[1] == "missing" ? 1 : 0) << outcome.err;
      EXPECT_THAT(outcome.out, StartsWith("log\n" + begin));
      EXPECT_THAT(outcome.out, Not(HasSubstr("mtllib")));
    }
  }
  for (const auto& [line, status] : std::vector<std::pair<std::vector<std::string>, int>>{
           {{"export", scene_, "-"}, 1},
           {{"export", scene_, "/dev/stdout"}, 1},
           {{"export", scene_, "b.kob", "--report", "/dev/fd/2"}, 1},
           {{"scene", scene_, "-o", "/proc/self/fd/2"}, 1},
           {{"export", scene_, "b.kob", "--depfile", "-"}, 2},
           {{"export", scene_, "b.kob", "--log", "/dev/stdout"}, 2},
           {{"export", scene_, "b.kob", "--log", "a", "--no-log"}, 2},
           {{"convert", "a.kob", "-"}, 2},
           {{"convert", "a.kob", "-", "--to", "gltf"}, 2},
           {{"convert", "a.kob", "b.glb", "--to", "max"}, 2}}) {
    SCOPED_TRACE(testing::PrintToString(line));
    const Outcome outcome = Run(line);
    EXPECT_EQ(outcome.status, status);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(Lines(outcome.err), status);
  }
  // Standard output may lead into what is read, or is another output.
  Write(root_ / "level.obj", "mtllib level.mtl\nv 0 0 0\nv 10 0 0\nv 0 10 0\nf 1 2 3\n");
  Write(root_ / "level.mtl", "newmtl a\n");
  struct Into {
    std::vector<std::string> line;
    fs::path file;
    std::string what;
  };
  for (const Into& into : std::vector<Into>{
           {{"scene", scene_}, scene_, "scene"},
           {{"scene", root_ / "level.obj"},
            root_ / "level.mtl",
            "file that the scene is read from,"},
           {{"export", scene_, "b.kob", "--quiet", "--report", "-"}, scene_, "scene"},
           {{"export", scene_, "a.kob", "--quiet", "--report", "-"}, "a.kob", "output"}}) {
    SCOPED_TRACE(testing::PrintToString(into.line));
    const fs::path file = work_ / into.file;
    const std::string content = Content(file);
    const Outcome outcome =
        Run(into.line, [&] { dup2(open(file.c_str(), O_RDWR), STDOUT_FILENO); });
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, HasSubstr("standard output: cannot be written: it is the " +
                                       into.what + " itself"));
    EXPECT_EQ(Content(file), content);
  }
  // A report that can't be printed costs no older output.
  const std::string before = Content(work_ / "a.kob");
  EXPECT_EQ(Export("a.kob", {"--fresh", "--voxel-size", "3", "--report", "-"},
                   [] { dup2(open("/dev/full", O_WRONLY), STDOUT_FILENO); })
                .status,
            1);
  EXPECT_EQ(Content(work_ / "a.kob"), before);
  EXPECT_THAT(Names(work_), UnorderedElementsAre("a.kob", "ExportDebug.txt"));
}

TEST_F(OutputsTest, AReplacedFileKeepsItsRightsItsOwnerAndItsAttributes) {
  const std::string old = work_ / "old.qob";
  Write(old, "old");
  fs::permissions(old, fs::perms(0640));
  // Rights for one more user; nothing where the file system knows no such lists.
  constexpr char kList[] =
      "\2\0\0\0\1\0\6\0\xff\xff\xff\xff\2\0\4\0\x39\5\0\0\4\0\4\0\xff\xff\xff\xff"
      "\x10\0\4\0\xff\xff\xff\xff\x20\0\0\0\xff\xff\xff\xff";
  constexpr const char* kName = "system.posix_acl_access";
  const bool hasList = setxattr(old.c_str(), kName, kList, sizeof kList - 1, 0) == 0;
  const bool hasComment = setxattr(old.c_str(), "user.comment", "mine", 4, 0) == 0;
  const bool isRoot = geteuid() == 0;
  if (isRoot) {
    ASSERT_EQ(chown(old.c_str(), 1234, 1235), 0);
  }
  for (const std::vector<std::string>& line :
       {std::vector<std::string>{"export", scene_, "old.qob"},
        {"scene", scene_, "-o", "old.qob"}}) {
    const Outcome outcome = Run(line);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.err, Not(HasSubstr("could not keep")));
    struct stat now {};
    ASSERT_EQ(stat(old.c_str(), &now), 0);
    EXPECT_EQ(now.st_mode & 07777U, 0640U);
    if (isRoot) {
      EXPECT_EQ(std::pair(now.st_uid, now.st_gid), std::pair(1234U, 1235U));
    }
    std::string value(sizeof kList, '\0');
    if (hasList) {
      EXPECT_EQ(getxattr(old.c_str(), kName, value.data(), value.size()),
                static_cast<ssize_t>(sizeof kList - 1));
    }
    if (hasComment) {
      EXPECT_EQ(getxattr(old.c_str(), "user.comment", value.data(), 9), 4);
    }
  }
  if (!isRoot) return;
  // Another user may replace the file, and is told what can't be kept. Its group's rights are not
  // given to another group.
  fs::permissions(work_, fs::perms::all);
  fs::permissions(root_, fs::perms::all);
  fs::permissions(old, fs::perms(0662));
  const Outcome outcome = Run({"scene", scene_, "-o", "old.qob"}, [] {
    if (setgid(4321) != 0 || setuid(4321) != 0) _exit(98);
  });
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(
      outcome.err,
      "mapexport: warning: old.qob: does not end in .scene.json or .scene.bin, so it won't be "
      "read as a scene file\nmapexport: warning: old.qob: is in its place, but could not keep "
      "its group: Operation not permitted\n");
  if (hasList) {
    std::string list(sizeof kList, '\0');
    getxattr(old.c_str(), kName, list.data(), list.size());
    EXPECT_EQ(list[4 + 2 * 8 + 2], 0) << "the group's rights in the list";
  } else {
    EXPECT_EQ(fs::status(old).permissions(), fs::perms(0622));
  }
}

TEST_F(OutputsTest, FilesOfTwoExportsDoNotMix) {
  Write(work_ / "a.kob", "old");
  // What holds the folder itself locked, as people do around a command, is not waited for.
  const int folder = open(work_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  ASSERT_EQ(flock(folder, LOCK_EX), 0);
  const fs::path lock = OutputPlace(FindOutput(work_ / "a.kob"), "a.kob").LockPath();
  const int other = open(lock.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  ASSERT_EQ(flock(other, LOCK_EX), 0);
  Outcome outcome;
  std::thread run([&] { outcome = Export("a.kob", {"--report", "a.json", "--fresh"}); });
  std::this_thread::sleep_for(std::chrono::milliseconds(500));
  EXPECT_EQ(Content(work_ / "a.kob"), "old") << "somebody else is placing files";
  EXPECT_FALSE(fs::exists(work_ / "a.json"));
  flock(other, LOCK_UN);
  run.join();
  close(folder);
  close(other);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.err, Not(HasSubstr("another export")));
  EXPECT_FALSE(fs::exists(lock));
  EXPECT_EQ(Run({"inspect", "a.kob"}).status, 0);
  EXPECT_TRUE(fs::exists(work_ / "a.json"));
}

TEST_F(OutputsTest, OnlyLeftOversOfEndedExportsGo) {
  const std::string output = work_ / "a.qob";
  const auto begin = [&](const std::function<void()>& end) {
    return InChild([&] {
      const OutputPlace place(FindOutput(output), "a.qob");
      Write(place.File(), "half");
      end();
    });
  };
  begin([] { _exit(0); });  // as if killed
  ASSERT_EQ(Names(work_).size(), 1U);
  EXPECT_EQ(Export("b.qob").status, 0);
  EXPECT_EQ(Names(work_).size(), 3U) << "another output's left-over is not looked at";
  EXPECT_EQ(Export("a.qob").status, 0);
  EXPECT_THAT(Names(work_), UnorderedElementsAre("a.qob", "b.qob", "ExportDebug.txt"));

  for (const int signal : {SIGTERM, SIGQUIT, SIGXCPU, SIGALRM, SIGUSR1, SIGUSR2, SIGPROF}) {
    const int interrupted = begin([&] {
      const OutputPlace another(FindOutput(work_ / "a.d"), "a.d");
      Write(another.File(), "half");
      raise(signal);
    });
    EXPECT_TRUE(WIFSIGNALED(interrupted) && WTERMSIG(interrupted) == signal) << signal;
    EXPECT_EQ(Names(work_).size(), 3U) << signal;
  }

  const int inLogFolder = InChild([&] {
    if (chdir(work_.c_str()) != 0) _exit(98);
    ExporterLog log("log.txt", TakenFiles());
    const OutputPlace place(FindOutput("a.qob"), "a.qob");
    log.EnterFolder(place.Folder());
    raise(SIGTERM);
    log.LeaveFolder();
  });
  EXPECT_TRUE(WIFSIGNALED(inLogFolder));
  EXPECT_EQ(Names(work_).size(), 3U) << "paths are relative to the folder of before";

  const OutputPlace running(FindOutput(output), "a.qob");
  Write(running.File(), "half");
  EXPECT_EQ(Export("a.qob").status, 0);
  EXPECT_EQ(Content(running.File()), "half");
}

}  // namespace
}  // namespace mapexport
