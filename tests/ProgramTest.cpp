// The program as people run it: the built mapexport, in temporary folders.
#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include <fcntl.h>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <seccomp.h>
#include <simdjson.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "app/RunReport.h"
#include "importer/ReadSeconds.h"
#include "support/ProgramRun.h"
#include "worker/ReaderMessage.h"

namespace mapexport {
namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using testing::UnorderedElementsAre;

TEST_F(ProgramTest, WrongCommandLinesEndWith2) {
  const std::string longPath(300, 'x');
  const std::vector<std::pair<std::vector<std::string>, std::string>> cases{
      {{}, "command"},
      {{"turn", "a", "b"}, "\"turn\""},
      {{"convert", "a", "b.max"}, ".glb, .gltf, .obj, .ply, .stl"},
      {{"convert", "a", "b.glb", "--coordinates", "4"}, "0 to 3, left-handed"},
      {{"--bogus"}, "--bogus"},
      {{"export"}, "SCENE"},
      {{"export", "a"}, "OUTPUT"},
      {{"export", "a", "b", "c"}, "c"},
      {{"export", "", "b"}, "SCENE"},
      {{"export", "a", ""}, "OUTPUT"},
      {{"export", "a", "b", "--bogus\x1b[31m"}, "--bogus\\u001B[31m"},
      {{"export", "a", "b", "--wel"}, "--wel"},
      {{"export", "a", "b", "--weld=yes"}, "--weld"},
      {{"export", "a", "b", "--no-weld=false"}, "--no-weld"},
      {{"export", "a", "b", "--json"}, "--json"},
      {{"export", "a", "b", "--weld-distance"}, "--weld-distance: a value"},
      {{"export", "--cxp=", "a", "b"}, "--cxp"},
      {{"export", "a", "b", "--cxp", ""}, "--cxp"},
      {{"export", "a", "b", "--cxp", longPath}, "254"},
      {{"export", "a", "b", "--settings", ""}, "--settings"},
      {{"export", "a", "b", "--coordinates", "4"}, "left-handed"},
      {{"export", "a", "b", "--coordinates", "00"}, "\"00\""},
      {{"export", "a", "b", "--coordinates", "Max"}, "\"Max\""},
      {{"export", "a", "b", "--texture-coordinates", "left-handed"}, "invert-xy"},
      {{"export", "a", "b", "--seed", "4294967296"}, "4294967295"},
      {{"export", "a", "b", "--seed", "-1"}, "\"-1\""},
      {{"export", "a", "b", "--voxel-size", std::string(256, '1')}, "255"},
      {{"export", "a", "b", "--up", "x"}, "auto, y, z"},
      {{"export", "a", "b", "--scale", "0"}, "--scale: \"0\""},
      {{"export", "a", "b", "--scale", "-1"}, "--scale: \"-1\""},
      {{"export", "a", "b", "--scale", "1e-99"}, "--scale: \"1e-99\""},
      {{"export", "a", "b", "--scale", std::string(256, '1')}, "--scale"},
      {{"export", "a", "b", "--read-limit", "1.5"}, "--read-limit: \"1.5\""},
      {{"export", "a", "b", "--depfile", ""}, "--depfile"},
      {{"export", "a", "b", "--report="}, "--report"},
      {{"scene"}, "SCENE"},
      {{"scene", "a", "--scale", "nan"}, "--scale: \"nan\""},
      {{"scene", "a", "--report", "r"}, "--report"},
      {{"scene", "a", "-o"}, "-o: a value"},
      {{"inspect", "a", "--layout", "map"}, "\"map\""},
  };
  for (const auto& [arguments, piece] : cases) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    const Outcome outcome = Run(arguments);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(Lines(outcome.err), 2);
    EXPECT_THAT(outcome.err, AllOf(HasSubstr(piece), HasSubstr("\nusage: mapexport ")));
  }
  EXPECT_THAT(Names(work_), IsEmpty());
}

TEST_F(ProgramTest, NumbersAreTypedAsGiven) {
  const std::vector<std::pair<std::string, std::string>> good{
      {"-0.25", "-0.250000"},
      {"+.5", "0.500000"},
      {"5.", "5.000000"},
      {"1e-3", "0.001000"},
      {"1E+2", "100.000000"},
      {"1e-400", "0.000000"},
      {"-0", "-0.000000"},
      {"0e999999", "0.000000"},
      {"3.4028235e38", "340282346638528859811704"},
      {std::string(255, '0'), "0.000000"},
  };
  for (const auto& [text, stored] : good) {
    SCOPED_TRACE(text);
    EXPECT_EQ(Export("a.qob", {"--weld-distance", text, "--settings", "s.reg"}).status, 0);
    EXPECT_THAT(Content(work_ / "s.reg"), HasSubstr("\"Welding Distance\"=\"" + stored));
  }
  for (const std::string text : {"", " 1", "1 ", "1,5", "1.5x", "0x10", "inf", "-nan", "1e39",
                                 "-1e39", "1e400", "3.4028236e38", "+-1", ".", "e5", "1e", "--"}) {
    SCOPED_TRACE(text);
    EXPECT_EQ(Export("b.qob", {"--weld-distance", text}).status, 2);
  }
}

TEST_F(ProgramTest, HelpAndVersion) {
  const std::vector<std::pair<std::vector<std::string>, std::vector<std::string>>> cases{
      {{"--version"}, {"1.0.0"}},
      {{"--help"}, {"export", "scene", "inspect", "formats", "--version"}},
      {{"formats"}, {".scene.json", "\n.fbx ", "\n.gltf ", "\n.obj ", "\n.3ds "}},
      {{"export", "--help"}, {"SCENE", "OUTPUT", "--weld, --no-weld", "--cxp FILE", "--help"}},
      {{"scene", "-h"}, {"SCENE", "-o", "--up", "--scale", "--read-limit"}},
      {{"inspect", "--bogus", "--help"}, {"FILE", "--json", "--summary", "--layout"}},
  };
  for (const auto& [arguments, pieces] : cases) {
    const Outcome outcome = Run(arguments);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    for (const std::string& piece : pieces) EXPECT_THAT(outcome.out, HasSubstr(piece));
  }
}

TEST_F(ProgramTest, TheExtensionOfTheWholePathDecides) {
  struct Case {
    std::string output, file, layout;
  };
  fs::create_directory(work_ / "maps.v2");
  fs::create_directory(work_ / "real.d");
  fs::create_symlink("real.d/x", work_ / "linked.map");
  fs::create_symlink("real.d/y", work_ / "link");
  const std::vector<Case> cases{
      {"a.qob", "a.qob", "qob"},
      {"b.QOB", "b.QOB", "qob"},
      {"c.kob", "c.kob", "kob"},
      {"d.map", "d.map", "kob"},
      {"level", "level.map", "kob"},
      {"level.", "level..map", "kob"},
      {"./dot", "dot", "kob"},
      {"maps.v2/level", "maps.v2/level", "kob"},
      {"maps.v2/e.qob", "maps.v2/e.qob", "qob"},
      {"[f] g.qob", "[f] g.qob", "qob"},
      {"../work/up", "up", "kob"},
      {"linked", "real.d/x", "kob"},
      {"./link", "real.d/y", "kob"},
      {work_ / "absolute", "absolute.map", "kob"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.output);
    const Outcome outcome = Export(c.output);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    const Outcome inspected = Run({"inspect", c.file, "--json", "--layout", c.layout});
    EXPECT_EQ(inspected.status, 0) << inspected.err;
    EXPECT_THAT(inspected.out, HasSubstr("Grass"));
  }
  // Nothing else came into being.
  EXPECT_THAT(Names(work_),
              UnorderedElementsAre("a.qob", "b.QOB", "c.kob", "d.map", "level.map", "level..map",
                                   "dot", "[f] g.qob", "up", "absolute.map", "maps.v2", "real.d",
                                   "linked.map", "link", "ExportDebug.txt"));
  EXPECT_THAT(Names(work_ / "maps.v2"), UnorderedElementsAre("level", "e.qob"));
  EXPECT_THAT(Names(work_ / "real.d"), UnorderedElementsAre("x", "y"));
  EXPECT_TRUE(fs::is_symlink(work_ / "link"));
}

TEST_F(ProgramTest, OutputsThatCannotBeHadAreRefused) {
  fs::create_directory(work_ / "folder");
  fs::create_directory(work_ / "folder.qob");
  fs::create_directory(work_ / "closed", fs::path("."));
  fs::permissions(work_ / "closed", fs::perms(0555));
  fs::create_symlink("loop.qob", work_ / "loop.qob");
  ASSERT_EQ(mkfifo((work_ / "fifo.qob").c_str(), 0600), 0);
  Write(work_ / "file", "a file");
  Write(work_ / "locked.qob", "locked");
  fs::permissions(work_ / "locked.qob", fs::perms(0444));
  const std::vector<std::string> before = Names(work_);

  std::vector<std::string> outputs{"missing/a.qob",
                                   "folder",
                                   "folder.qob",
                                   "folder/",
                                   "file/a.qob",
                                   "/dev/full",
                                   "fifo.qob",
                                   "loop.qob",
                                   ".",
                                   "/dev/null",
                                   std::string(300, 'n') + ".qob"};
  if (geteuid() != 0) outputs.insert(outputs.end(), {"closed/a.qob", "locked.qob"});
  for (const std::string& output : outputs) {
    SCOPED_TRACE(output);
    for (const Outcome& outcome : {Export(output), Run({"scene", scene_, "-o", output})}) {
      EXPECT_EQ(outcome.status, 1);
      EXPECT_EQ(outcome.out, "");
      EXPECT_EQ(Lines(outcome.err), 1);
      EXPECT_THAT(outcome.err, AllOf(StartsWith("mapexport: error: "), HasSubstr(output)));
    }
  }
  EXPECT_THAT(Names(work_), testing::UnorderedElementsAreArray(before));
  EXPECT_EQ(Content(work_ / "locked.qob"), "locked");
}

TEST_F(ProgramTest, ScenesThatCannotBeReadLeaveTheOutputAlone) {
  Write(work_ / "old.qob", "old");
  Write(work_ / "empty.scene.json", "");
  Write(work_ / "cut.scene.json", std::string(kScene).substr(0, 200));
  Write(work_ / "text.obj\x1b[2J.3ds", "no scene");
  for (const std::string scene : {"missing.scene.json", "missing.fbx", "empty.scene.json",
                                  "cut.scene.json", "text.obj\x1b[2J.3ds", "."}) {
    SCOPED_TRACE(scene);
    for (const Outcome& outcome :
         {Run({"export", scene, "old.qob"}), Run({"scene", scene, "-o", "old.qob"})}) {
      EXPECT_EQ(outcome.status, 1);
      EXPECT_EQ(Lines(outcome.err), 1);
      EXPECT_THAT(outcome.err, Not(HasSubstr("\x1b")));
    }
  }
  EXPECT_EQ(Export(scene_).status, 1) << "the scene itself";
  EXPECT_EQ(Content(scene_), kScene);
  EXPECT_EQ(Content(work_ / "old.qob"), "old");
  EXPECT_EQ(Names(work_).size(), 4U);
  EXPECT_FALSE(fs::exists(root_ / "config"));
}

TEST_F(ProgramTest, ADiskThatFillsUpLeavesTheOutputAlone) {
  Write(work_ / "old.qob", "old");
  const auto small = [] {
    const rlimit limit{300, 300};
    setrlimit(RLIMIT_FSIZE, &limit);
  };
  const Outcome exported = Export("old.qob", {"--fresh", "--quiet"}, small);
  const Outcome written = Run({"scene", scene_, "-o", "old.qob"}, small);
  for (const Outcome& outcome : {exported, written}) {
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, HasSubstr("old.qob: cannot be written: File too large"));
  }
  EXPECT_EQ(Content(work_ / "old.qob"), "old");
  EXPECT_THAT(Names(work_), UnorderedElementsAre("old.qob", "ExportDebug.txt"));
}

TEST_F(ProgramTest, TheSameSeedGivesTheSameBytes) {
  // Faces that span several cells draw random numbers.
  scene_ = MAPEXPORT_SOURCE_DIR "/examples/yard.scene.json";
  const auto withSeed = [this](const fs::path& output, const char* seed,
                               const std::function<void()>& before = {}) {
    return Export(output, {"--seed", "8", "--seed", seed, "--fresh", "--voxel-size", "90"}, before)
        .status;
  };
  EXPECT_EQ(withSeed("a.kob", "7"), 0);
  EXPECT_EQ(withSeed(root_ / "b.kob", "7", [] { setenv("LC_ALL", "de_DE.UTF-8", 1); }), 0);
  EXPECT_TRUE(Content(root_ / "b.kob") == Content(work_ / "a.kob"));
  EXPECT_EQ(Run({"scene", scene_, "-o", "again.scene.json"}).status, 0);
  EXPECT_EQ(Run({"scene", "again.scene.json"}).out, Content(work_ / "again.scene.json"));
  scene_ = "again.scene.json";
  EXPECT_EQ(withSeed("c.kob", "7"), 0);
  EXPECT_TRUE(Content(work_ / "c.kob") == Content(work_ / "a.kob"));
  EXPECT_EQ(withSeed("d.kob", "9"), 0);
  EXPECT_FALSE(Content(work_ / "d.kob") == Content(work_ / "a.kob")) << "the seed has an effect";
}

TEST_F(ProgramTest, SettingsAreRemembered) {
  const fs::path settings = root_ / "config/mapexport/settings.reg";
  EXPECT_EQ(Export("a.qob", {"--fresh", "--coordinates", "1"}).status, 0);
  EXPECT_FALSE(fs::exists(settings));
  EXPECT_EQ(Export("a.qob", {"--coordinates", "1", "--coordinates", "inverse-max", "--clean",
                             "--no-clean", "--texture-coordinates=2"})
                .status,
            0);
  EXPECT_EQ(Export("a.qob").status, 0);
  EXPECT_THAT(Content(settings), AllOf(HasSubstr("\"Export Coordinates\"=dword:00000003"),
                                       HasSubstr("\"Export Texture Coordinates\"=dword:00000002"),
                                       HasSubstr("\"Clean vertex attributes?\"=\"FALSE\""),
                                       HasSubstr("\"CXP Filename\"=\"\"")));

  const Outcome cxp = Export("a.qob", {"--settings", "s.reg", "--cxp", "none.cxp", "--quiet"});
  EXPECT_EQ(cxp.status, 0);
  const std::string picked = fs::canonical(work_) / "none.cxp";
  EXPECT_THAT(cxp.err, AllOf(HasSubstr("warning: " + picked), HasSubstr("CXP")));
  EXPECT_THAT(Content(work_ / "s.reg"), HasSubstr("\"CXP Filename\"=\"" + picked + "\""));

  Write(work_ / "bad.reg", "no settings");
  const Outcome bad = Export("a.qob", {"--settings", "bad.reg", "--quiet"});
  EXPECT_EQ(bad.status, 0);
  EXPECT_THAT(bad.err, AllOf(StartsWith("mapexport: warning: "), HasSubstr("bad.reg")));
  EXPECT_EQ(Content(work_ / "bad.reg"), "no settings");
}

TEST_F(ProgramTest, WhatAnExportSays) {
  const Outcome loud = Export("a.qob", {"--fresh"});
  EXPECT_THAT(loud.err, AllOf(HasSubstr("Results: 3 faces, 7 vertices"), HasSubstr("(Change = "),
                              HasSubstr("1 degenerate triangle was left out"),
                              EndsWith("\nText Scene Export: Scene exported successfully.\n")));
  EXPECT_EQ(loud.out, "");
  EXPECT_EQ(Export("a.qob", {"--fresh", "--quiet"}).err, "");
  EXPECT_THAT(Export("a.qob", {"--fresh", "--no-weld"}).err, Not(HasSubstr("Results")));
  EXPECT_THAT(Export("a.qob", {"--fresh", "--no-weld", "--remove-t-vertices", "--quiet"}).err,
              StartsWith("mapexport: warning: --no-weld"));

  fs::remove(work_ / "ExportDebug.txt");
  fs::create_directory(work_ / "ExportDebug.txt");
  const Outcome noLog = Export("a.qob", {"--fresh", "--quiet"});
  EXPECT_EQ(noLog.status, 0);
  EXPECT_THAT(noLog.err, StartsWith("mapexport: warning: ExportDebug.txt: "));
  fs::remove(work_ / "ExportDebug.txt");

  const std::vector<std::string> small{"--fresh", "--quiet", "--weld-distance", "0.51"};
  EXPECT_EQ(Export("a.qob", small).err, "mapexport: warning: " + scene_ +
                                            ": its largest extent, 10, is under 20 times the weld "
                                            "distance, 0.51: welding may merge what is meant to be "
                                            "apart\n");
  EXPECT_EQ(Export("a.qob", {"--fresh", "--quiet", "--weld-distance", "9", "--no-weld"}).err, "");
  const std::string infinite = R"("Welding Distance"="inf")";
  Write(work_ / "inf.reg",
        "REGEDIT4\n\n[HKEY_LOCAL_MACHINE\\Software\\Corvantis\\Talvern\\Exporter]\n" + infinite);
  EXPECT_THAT(Export("a.qob", {"--settings", "inf.reg", "--quiet"}).err,
              HasSubstr("the weld distance, inf: welding may merge"));
  EXPECT_THAT(Content(work_ / "inf.reg"), HasSubstr(infinite));
  EXPECT_EQ(Export("a.qob", {"--fresh", "--quiet", "--up", "z", "--scale", "2"}).err,
            "mapexport: warning: " + scene_ +
                ": --up and --scale have no effect: a scene file holds the scene as the exporter "
                "sees it\n");
}

TEST_F(ProgramTest, ListsBeyond16BitIndicesEndWith4) {
  std::string vertices;
  std::string faces;
  for (int i = 0; i < 21846; ++i) {
    const auto corner = [&](int y, int z) {
      return "[" + std::to_string(i) + "," + std::to_string(y) + "," + std::to_string(z) + "]";
    };
    const std::string comma = i == 0 ? "" : ",";
    vertices += comma + corner(0, 0) + "," + corner(1, 0) + "," + corner(0, 1);
    faces += comma + "[" + std::to_string(3 * i) + "," + std::to_string(3 * i + 1) + "," +
             std::to_string(3 * i + 2) + "]";
  }
  scene_ = work_ / "long.scene.json";
  Write(
      scene_,
      R"({"format":"mapexport-scene","version":1,"root":{"children":[{"name":"Big","mesh":{"vertices":[)" +
          vertices + R"(],"faces":[)" + faces +
          R"(]}},{"name":"Excluded","mesh":{"vertices":[[0,0,0]],"faces":[[0,0,0]]}}]}})");
  const Outcome exported =
      Export("long.qob", {"--fresh", "--no-weld", "--voxel-size", "1e6", "--quiet"});
  EXPECT_EQ(exported.status, 4);
  EXPECT_THAT(exported.err, AllOf(HasSubstr("vertices: 65538 entries, 2 more than"),
                                  HasSubstr("corners: 65538 entries, 2 more than")));
  EXPECT_EQ(Lines(exported.err), 2) << "each list is told of once";
  EXPECT_THAT(exported.err, AllOf(HasSubstr("most vertices in \"Big\" (65538)\n"),
                                  HasSubstr("most triangles in \"Big\" (21846)\n")));
  const Outcome inspected = Run({"inspect", "long.qob", "--summary"});
  EXPECT_EQ(inspected.status, 4);
  EXPECT_THAT(inspected.err, HasSubstr("65538"));
  const Outcome converted = Run({"convert", "long.qob", "long.stl"});
  EXPECT_EQ(converted.status, 4);
  EXPECT_EQ(converted.err, inspected.err);
  EXPECT_TRUE(fs::exists(work_ / "long.stl"));
  EXPECT_THAT(inspected.out, Not(IsEmpty()));
}

TEST_F(ProgramTest, PlacesInLongBatchesAreCutTo16Bits) {
  std::string faces = "[0,1,2]";
  for (int i = 1; i < 65537; ++i) faces += ",[0,1,2]";
  scene_ = work_ / "long.scene.json";
  Write(scene_, R"({"format":"mapexport-scene","version":1,"root":{"mesh":{)"
                R"("vertices":[[0,0,0],[9,0,0],[0,9,0]],"faces":[)" +
                    faces + "]}}}");
  const Outcome exported = Export("long.kob", {"--fresh", "--quiet"});
  EXPECT_EQ(exported.status, 4);
  EXPECT_THAT(exported.err, HasSubstr("faces: 65537 entries, 1 more than"));
  EXPECT_EQ(Run({"inspect", "long.kob", "--summary"}).status, 4);
}

TEST_F(ProgramTest, StandardOutputThatFailsIsNoticed) {
  ASSERT_EQ(Export("a.qob").status, 0);
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{"--help"}, {"scene", scene_}, {"inspect", "a.qob"}}) {
    SCOPED_TRACE(arguments[0]);
    const Outcome full = Run(arguments, [] { dup2(open("/dev/full", O_WRONLY), STDOUT_FILENO); });
    EXPECT_EQ(full.status, 1);
    EXPECT_THAT(full.err, HasSubstr("standard output: cannot be written: No space left"));
    EXPECT_EQ(Run(arguments, [] { close(STDOUT_FILENO); }).status, 1);
    const Outcome gone = Run(arguments, [] {
      int ends[2];
      if (pipe(ends) == 0) dup2(ends[1], STDOUT_FILENO);
      close(ends[0]);
    });
    EXPECT_EQ(gone.status, 1);
    EXPECT_EQ(gone.err, "");
  }
  // A model file is not mistaken for a stream that came closed.
  EXPECT_EQ(Export("b.qob", {},
                   [] {
                     close(STDIN_FILENO);
                     close(STDOUT_FILENO);
                     close(STDERR_FILENO);
                   })
                .status,
            0);
  EXPECT_EQ(Run({"inspect", "b.qob"}).status, 0);
}

TEST_F(ProgramTest, InspectTellsOfDamage) {
  ASSERT_EQ(Export("a.kob").status, 0);
  const std::string sound = Content(work_ / "a.kob");
  Write(work_ / "cut.kob", sound.substr(0, sound.size() / 2));
  Write(work_ / "empty.kob", "");
  for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
           {"cut.kob"}, {"empty.kob"}, {"missing.kob"}, {"."}, {"a.kob", "--layout", "qob"}}) {
    SCOPED_TRACE(arguments[0]);
    std::vector<std::string> line = arguments;
    line.insert(line.begin(), "inspect");
    const Outcome outcome = Run(line);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.err, StartsWith("mapexport: error: " + arguments[0] + ": "));
    line[0] = "convert";
    line.insert(line.begin() + 2, "a.gltf");
    const Outcome converted = Run(line);
    EXPECT_EQ(converted.status, 1);
    EXPECT_EQ(converted.err, outcome.err);
    EXPECT_FALSE(fs::exists(work_ / "a.gltf"));
  }
}

void EndSoon() {
  alarm(30);
}

TEST_F(ProgramTest, TheSizeAndTheBeginningOfAFileComeFirst) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "AddressSanitizer needs the address space";
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
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(Lines(outcome.err), 1);
    EXPECT_THAT(outcome.err, AllOf(HasSubstr(file), HasSubstr(reason)));
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
      EXPECT_EQ(outcome.status, 1);
      EXPECT_EQ(Lines(outcome.err), 1);
      EXPECT_THAT(outcome.err, AllOf(HasSubstr(file + ": "), HasSubstr("not a regular file")));
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

TEST_F(ProgramTest, ForeignNamesBringNoControlCharacters) {
  Write(work_ / "level.gltf",
        R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0]}],
"nodes":[{"mesh":0,"name":"\ntouch PWNED #\u009b\u007f"}],
"meshes":[{"primitives":[{"attributes":{"POSITION":0}}]}],
"accessors":[{"bufferView":0,"componentType":5126,"count":3,"type":"VEC3"}],
"bufferViews":[{"buffer":0,"byteLength":36}],"buffers":[{"byteLength":36,
"uri":"data:;base64,AAAAAAAAAAAAAAAAAACAPwAAAAAAAAAAAAAAAAAAAAAAAAAA"}]})");
  const Outcome foreign = Run({"export", "level.gltf", "a.qob", "--fresh"});
  EXPECT_EQ(foreign.status, 0) << foreign.err;
  EXPECT_THAT(foreign.err, AllOf(HasSubstr("blanks replace 3 control characters in names of "
                                           "nodes, materials or textures\n"),
                                 HasSubstr("left out (see ExportDebug.txt)\n")));
  EXPECT_THAT(Content(work_ / "ExportDebug.txt"), HasSubstr("GROUP touch PWNED #  \n"));

  // A scene file keeps them, and so does the log.
  std::string text = kScene;
  text.replace(text.find("Floor"), 5, "\\ntouch PWNED #");
  Write(work_ / "named.scene.json", text);
  const Outcome named = Run({"export", "named.scene.json", "a.qob", "--fresh"});
  EXPECT_THAT(named.err, HasSubstr("(see ExportDebug.txt; names in it hold control characters"));
  EXPECT_THAT(Content(work_ / "ExportDebug.txt"), HasSubstr("GROUP\ntouch PWNED #\n"));
  // Nor does the name of an output get into the lines of a file.
  EXPECT_EQ(Run({"convert", "a.qob", "a\nb.obj"}).status, 1);
  EXPECT_FALSE(fs::exists(work_ / "a\nb.obj"));
  EXPECT_EQ(Run({"convert", "a.qob", "a\nb.glb"}).status, 0);
}

TEST_F(ProgramTest, PagesAreWrittenSafely) {
  ASSERT_EQ(Export("a.qob").status, 0);
  const Outcome outcome = Run({"view", "a.qob", "-o", "a\x1b[2J\n.html"});
  if (outcome.err.find("without the page") != std::string::npos) GTEST_SKIP() << outcome.err;
  EXPECT_EQ(outcome.out, "wrote a\\u001B[2J\\u000A.html\n");
  EXPECT_THAT(Content(work_ / "a\x1b[2J\n.html"),
              HasSubstr("default-src 'none'; base-uri 'none'; form-action 'none'; img-src"));
}

TEST(RunReportTest, SumsOfCountsDoNotWrap) {
  RunReport report;
  report.leftOut = {{RemarkKind::kWarning, "left-out-points", "", ~std::uint64_t{0}},
                    {RemarkKind::kWarning, "left-out-points", "", 5}};
  std::ostringstream out;
  WriteReport(report, {}, {}, out);
  EXPECT_THAT(out.str(), HasSubstr("\"points\": 18446744073709551615"));
}

// Readers of the import library end in an endless loop and a crash on these, and would overflow the
// stack on the third.
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
constexpr const char* kObject =
    "mtllib level.mtl\nv 0 0 0\nv 10 0 0\nv 0 10 0\nusemtl Red\nf 1 2 3\n";

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
      EXPECT_EQ(outcome.status, 1);
      EXPECT_EQ(outcome.out, "");
      EXPECT_EQ(Lines(outcome.err), 1);
      EXPECT_THAT(outcome.err,
                  AllOf(StartsWith("mapexport: error: " + scene + ": "), HasSubstr(reason)));
    }
  }
  EXPECT_EQ(Content(work_ / "old.qob"), "old");
}

TEST_F(ProgramTest, AReaderThatWantsAllMemoryEnds) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "AddressSanitizer needs the address space";
#endif
  Write(work_ / "endless.off", kEndless);
  const Outcome outcome = Run({"scene", "endless.off"}, [] {
    const rlimit limit{1 << 30, 1 << 30};
    setrlimit(RLIMIT_AS, &limit);
  });
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err,
            "mapexport: error: endless.off: needs more memory to read than there is\n");
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
        [&lacks = lacks] {
          const scmp_filter_ctx filter = seccomp_init(SCMP_ACT_ALLOW);
          for (const char* name : lacks) {
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

TEST_F(ProgramTest, OfWhatTheReaderSaysOnlySoMuchIsTakenOver) {
  const ReaderMessage sound{{{RemarkKind::kNote, "axes", "no axes"}}, {}, {"a.mtl"}};
  EXPECT_EQ(ReaderMessageOf(ToBytes(sound)).remarks[0].text, "no axes");
  const auto changed = [&sound](const std::function<void(ReaderMessage&)>& change) {
    ReaderMessage message = sound;
    change(message);
    return ToBytes(message);
  };
  const auto repeated = [&sound](std::size_t count, const std::string& code) {
    ReaderMessage message = sound;
    for (std::size_t i = 0; i < count; ++i) {
      message.remarks.push_back({RemarkKind::kNote, code.empty() ? std::to_string(i) : code, "a"});
    }
    return ToBytes(message);
  };
  for (const std::string& bytes :
       {ToBytes(sound) + "x", ToBytes(sound).substr(1), std::string(),
        changed([](auto& message) { message.sideFiles.assign(4097, "a"); }),
        changed([](auto& message) { message.sideFiles.emplace_back(4096, 'a'); }),
        changed([](auto& message) { message.sideFiles.emplace_back("a\0b", 3); }),
        changed([](auto& message) { message.sideFiles.emplace_back(); }), repeated(4096, "axes"),
        repeated(64, ""), repeated(1, std::string(65, 'a'))}) {
    EXPECT_THROW(ReaderMessageOf(bytes), BadReaderMessage) << bytes.size();
  }
  const std::string many =
      changed([](auto& message) { message.sideFiles.assign(4096, std::string(4095, 'a')); });
  EXPECT_EQ(ReaderMessageOf(many).sideFiles.size(), 4096U);
  const std::string longText =
      changed([](auto& message) { message.remarks[0].text.assign(100'000, 'a'); });
  EXPECT_EQ(ReaderMessageOf(longText).remarks[0].text.size(), 8192U);
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
  EXPECT_EQ(warnings.size(), 4096U);
  EXPECT_EQ(warnings.at(4095)["count"].get_uint64().value(), 905U);
}

TEST_F(ProgramTest, TheTimeToReadFollowsTheSize) {
  for (const auto& [name, size, seconds] : {std::tuple{"missing.fbx", -1, 5U},
                                            {"a.fbx", 0, 5U},
                                            {"a.fbx", 1, 6U},
                                            {"a.fbx", 4'000'000, 6U},
                                            {"a.fbx", 4'000'001, 7U},
                                            {"a.obj", 2'000'000'000, 45U},
                                            {"a.GLTF", 1, 45U},
                                            {"a.lws", 1, 45U},
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

TEST_F(ProgramTest, ForeignScenesExportAsTheirSceneFiles) {
  Write(work_ / "level.obj", kObject);
  Write(work_ / "level.mtl", "newmtl Red\nKd 1 0 0\n");
  std::vector<std::string> scenes;
  for (const std::vector<std::string>& import : std::vector<std::vector<std::string>>{
           {}, {"--up", "z"}, {"--up", "auto", "--scale", "2.5", "--read-limit", "0"}}) {
    SCOPED_TRACE(testing::PrintToString(import));
    std::vector<std::string> direct{"export", "level.obj", "a.kob", "--fresh", "--seed", "1"};
    std::vector<std::string> written{"scene", "level.obj", "-o", "level.scene.json"};
    direct.insert(direct.end(), import.begin(), import.end());
    written.insert(written.end(), import.begin(), import.end());
    EXPECT_EQ(Run(direct).status, 0);
    EXPECT_EQ(Run(written).status, 0);
    EXPECT_EQ(Run({"export", "level.scene.json", "b.kob", "--fresh", "--seed", "1"}).status, 0);
    EXPECT_EQ(Content(work_ / "a.kob"), Content(work_ / "b.kob"));
    scenes.push_back(Content(work_ / "level.scene.json"));
  }
  EXPECT_NE(scenes[0], scenes[1]);
  EXPECT_NE(scenes[0], scenes[2]);
}

TEST_F(ProgramTest, DepFilesNameWhatTheOutputDependsOn) {
  fs::create_directory(work_ / "a b");
  Write(work_ / "a b/level.obj", kObject);
  Write(work_ / "a b/level.mtl", "newmtl Red\nKd 1 0 0\n");
  Write(work_ / "#1$.cxp", "");
  EXPECT_EQ(Run({"export", "a b/level.obj", "level", "--depfile", "level.d", "--settings", "s.reg",
                 "--cxp", "#1$.cxp"})
                .status,
            0);
  EXPECT_EQ(Content(work_ / "level.d"), "level.map: a\\ b/level.obj \\\n  a\\ b/level.mtl \\\n  " +
                                            fs::canonical(work_).string() +
                                            "/\\#1$$.cxp \\\n  s.reg\n");
  // What can't be read does not count, nor what is not looked at.
  EXPECT_EQ(Run({"export", scene_, "x:y \\ z.qob", "--depfile", "x.d", "--fresh", "--settings",
                 "s.reg", "--cxp", "none.cxp", "--quiet"})
                .status,
            0);
  EXPECT_EQ(Content(work_ / "x.d"), "x\\:y\\ \\\\\\ z.qob: " + scene_ + "\n");
  Write(work_ / "old.d", "old");
  Write(work_ / "archive.obj", "mtllib m(1)\nv 0 0 0\nv 10 0 0\nv 0 10 0\nf 1 2 3\n");
  Write(work_ / "m(1)", "newmtl Red\n");
  EXPECT_THAT(Run({"export", "archive.obj", "a.qob", "--depfile", "old.d", "--fresh"}).err,
              HasSubstr("m(1): cannot stand in a --depfile"));
  for (const std::string output : {"a;b.qob", "100%.qob", "a=b.qob", "a\nb.qob"}) {
    const Outcome outcome = Export(output, {"--depfile", "old.d"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, HasSubstr("cannot stand in a --depfile"));
    EXPECT_FALSE(fs::exists(work_ / output));
  }
  // What the scene is read from stays, too.
  const std::string material = Content(work_ / "a b/level.mtl");
  const std::string object = "a b/level.obj";
  const std::string side = "a b/level.mtl";
  for (const std::vector<std::string>& line :
       std::vector<std::vector<std::string>>{{"export", object, side},
                                             {"export", object, "a.qob", "--report", side},
                                             {"export", object, "a.qob", "--depfile", side},
                                             {"scene", object, "-o", side}}) {
    EXPECT_EQ(Run(line).status, 1);
    EXPECT_EQ(Content(work_ / side), material);
  }
  for (const std::string file : {"missing/x.d", "a.qob", scene_.c_str(), "."}) {
    SCOPED_TRACE(file);
    for (const std::string option : {"--depfile", "--report"}) {
      EXPECT_EQ(Export("a.qob", {option, file}).status, 1);
    }
  }
  EXPECT_EQ(Export("a.qob", {"--report", "same", "--depfile", "./same"}).status, 1);
  EXPECT_FALSE(fs::exists(work_ / "a.qob"));
  EXPECT_EQ(Content(work_ / "old.d"), "old");
  EXPECT_EQ(Content(scene_), kScene);
}

TEST_F(ProgramTest, ReportsTellPrograms) {
  simdjson::dom::parser parser;
  const auto number = [](simdjson::dom::element report, std::string_view path) {
    return report.at_pointer(path).get_uint64().value();
  };
  EXPECT_EQ(Export("a.kob",
                   {"--fresh", "--quiet", "--no-weld", "--cxp", "none.cxp", "--report", "r.json"})
                .status,
            0);
  simdjson::dom::element report = parser.load((work_ / "r.json").string());
  EXPECT_EQ(number(report, "/status"), 0U);
  EXPECT_EQ(number(report, "/bytes"), fs::file_size(work_ / "a.kob"));
  EXPECT_EQ(number(report, "/before/triangles"), 4U);
  EXPECT_EQ(number(report, "/before/vertices"), 7U);
  EXPECT_EQ(number(report, "/after/batchFaces"), 2U);
  EXPECT_EQ(number(report, "/after/faces"), 3U);
  EXPECT_EQ(number(report, "/leftOut/degenerate-triangles"), 1U);
  EXPECT_EQ(report.at_pointer("/warnings/0/code").get_string().value(), "cxp-unreadable");
  for (const char* stage : {"reading", "exporting", "checking"}) {
    EXPECT_EQ(report["milliseconds"][stage].error(), simdjson::SUCCESS);
  }
  const std::string sum(report["sha256"].get_string().value());
  Write(work_ / "sums", sum + "  a.kob\n");
  EXPECT_EQ(std::system(("cd '" + work_.string() + "' && sha256sum -c --quiet sums").c_str()), 0);

  for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
           {"export", "missing.fbx", "a.kob"}, {"export", scene_, "missing/a.kob"}}) {
    std::vector<std::string> line = arguments;
    line.insert(line.end(), {"--report", "r.json"});
    EXPECT_EQ(Run(line).status, 1);
    report = parser.load((work_ / "r.json").string());
    EXPECT_EQ(number(report, "/status"), 1U);
    EXPECT_THAT(std::string(report["error"].get_string().value()), HasSubstr("missing"));
    EXPECT_NE(report["sha256"].error(), simdjson::SUCCESS);
  }

  Write(work_ / "t.obj", "v 0 0 0\nv 9 0 0\nv 0 9 0\nf 1 2 3\n");
  EXPECT_EQ(Run({"export", "t.obj", "t.kob", "--fresh", "--quiet", "--report", "r.json"}).status,
            0);
  report = parser.load((work_ / "r.json").string());
  EXPECT_EQ(report["milliseconds"]["rebuilding"].error(), simdjson::SUCCESS);
  EXPECT_THAT(Run({"export", "t.obj", "t.kob", "--fresh", "--scale", "0.01"}).err,
              HasSubstr("t.kob: 0 of 1 triangles are left"));
}

}  // namespace
}  // namespace mapexport
