// Command lines, and the commands on model files, by the built program.
#include <fcntl.h>
#include <unistd.h>

#include "support/ProgramRun.h"

namespace mapexport {
namespace {

TEST_F(ProgramTest, WrongCommandLinesEndWith2) {
  const std::string longPath(300, 'x');
  const std::vector<std::pair<std::vector<std::string>, std::string>> cases{
      {{}, "command"},
      {{"exprot", "a", "b"}, "no command \"exprot\"; did you mean \"export\"?\n"},
      {{"help", "inspct"}, "did you mean \"inspect\"?\n"},
      {{"xyz"}, "no command \"xyz\"\n"},
      {{"-v"}, "instead of a command\n"},
      {{"inspect", "a", "[b]"}, "error: \"[b]\" is one argument too many\n"},
      {{"--versoin"}, "did you mean \"--version\"?\n"},
      {{"export", "a", "--no-wedl"},
       "export has no option \"--no-wedl\"; did you mean \"--no-weld\"?\n"},
      {{"export", "a", "b", "--texture=max"}, "did you mean \"--texture-coordinates\"?\n"},
      {{"export", "a", "b", "--allow", "axis"}, "did you mean \"axes\"?\n"},
      {{"inspect", "a", "--" + std::string(100000, 'x')}, "xxx\"\n"},
      {{"convert", "a", "b.max"}, ".glb, .gltf, .obj, .ply, .stl"},
      {{"export"}, "SCENE"},
      {{"export", "a"}, "OUTPUT"},
      {{"export", "a", "b", "c"}, "c"},
      {{"export", "", "b"}, "SCENE"},
      {{"export", "a", "b", "--bogus\x1b[31m"}, "--bogus\\u001B[31m"},
      {{"export", "a", "b", "--weld=yes"}, "--weld"},
      {{"export", "a", "b", "--json"}, "--json"},
      {{"export", "a", "b", "--weld-distance"}, "--weld-distance: a value"},
      {{"export", "--cxp=", "a", "b"}, "--cxp"},
      {{"export", "a", "b", "--cxp", longPath}, "254"},
      {{"export", "a", "b", "--settings", ""}, "--settings"},
      {{"export", "a", "b", "--coordinates", "4"}, "left-handed"},
      {{"export", "a", "b", "--coordinates", "Max"}, "\"Max\""},
      {{"export", "a", "b", "--texture-coordinates", "left-handed"}, "invert-xy"},
      {{"export", "a", "b", "--seed", "4294967296"}, "4294967295"},
      {{"export", "a", "b", "--seed", "-1"}, "\"-1\""},
      {{"export", "a", "b", "--voxel-size", std::string(256, '1')}, "255"},
      {{"export", "a", "b", "--allow", "scale", "--allow", "any"},
       "--allow: there is no CODE \"any"},
      {{"export", "a", "b", "--up", "x"}, "auto, y, z"},
      {{"scene", "a", "--scale", "0"}, "--scale: \"0\""},
      {{"export", "a", "b", "--scale", "1e-99"}, "--scale: \"1e-99\""},
      {{"export", "a", "b", "--scale", std::string(256, '1')}, "--scale"},
      {{"export", "a", "b", "--read-limit", "1.5"}, "--read-limit: \"1.5\""},
      {{"scene"}, "SCENE"},
      {{"scene", "a", "--report", "r"}, "--report"},
      {{"scene", "a", "-o"}, "-o: a value"},
      {{"inspect", "a", "--layout", "map"}, "\"map\""},
      {{"inspect", "a", "--sets", "--json"}, "--sets and --json exclude each other"},
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
      {"5.", "5.000000"},
      {"1e-3", "0.001000"},
      {"1e-400", "0.000000"},
      {"-0", "-0.000000"},
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
  EXPECT_THAT(Run({"--version"}).out, HasSubstr("1.1.0"));
  EXPECT_THAT(Run({"formats"}).out, AllOf(HasSubstr(".scene.json"), HasSubstr("\n.fbx ")));
  EXPECT_EQ(Run({"help"}).out, Run({"--help"}).out);
  EXPECT_EQ(Run({"help", "export"}).out, Run({"export", "-h"}).out);
  EXPECT_THAT(Run({"help", "help"}).out, HasSubstr("usage: mapexport help [COMMAND] [options]\n"));
  const Outcome help = Run({"inspect", "--bogus", "--help"});
  EXPECT_EQ(help.status, 0);
  EXPECT_THAT(help.out, AllOf(HasSubstr("FILE"), HasSubstr("--layout")));
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

TEST_F(ProgramTest, DiffEndsWithItsAnswer) {
  const std::vector<std::string> cells{"--fresh", "--voxel-size", "2"};
  ASSERT_EQ(Export("a.kob", {"--fresh"}).status + Export("cells.kob", cells).status +
                Export("other.kob", {"--fresh", "--coordinates", "max"}).status,
            0);
  Write(work_ / "cut.kob", Content(work_ / "a.kob").substr(0, 500));
  EXPECT_EQ(Run({"diff", "a.kob", "./a.kob"}).out, "equal: 3 triangles\n");
  const Outcome order = Run({"diff", "a.kob", "cells.kob"});
  EXPECT_EQ(order.status, 0);
  EXPECT_THAT(order.out, AllOf(StartsWith("only the order differs"), HasSubstr("batches  1  2")));
  for (const char* option : {"--json", "--"}) {
    EXPECT_EQ(Run({"diff", option, "a.kob", "other.kob"}).status, 5);
  }
  ExpectRefusal(Run({"diff", "a.kob", "cut.kob"}), Run({"inspect", "cut.kob"}).err);
  ExpectRefusal(Run({"diff", "missing.kob", "a.kob"}), "missing.kob: ");
  const auto full = [] { dup2(open("/dev/full", O_WRONLY), STDOUT_FILENO); };
  EXPECT_EQ(Run({"diff", "a.kob", "other.kob"}, full).status, 1);
}

TEST_F(ProgramTest, PagesAreWrittenSafely) {
  ASSERT_EQ(Export("a.qob").status, 0);
  const Outcome outcome = Run({"view", "a.qob", "-o", "a\x1b[2J\n.html"});
  if (outcome.err.find("without the page") != std::string::npos) GTEST_SKIP() << outcome.err;
  EXPECT_EQ(outcome.out, "wrote a\\u001B[2J\\u000A.html\n");
  Write(work_ / "cut.qob", Content(work_ / "a.qob").substr(0, 500));
  ExpectRefusal(Run({"view", "cut.qob"}), Run({"inspect", "cut.qob"}).err);
  EXPECT_THAT(Content(work_ / "a\x1b[2J\n.html"),
              HasSubstr("default-src 'none'; base-uri 'none'; form-action 'none'; img-src"));
}

TEST_F(ProgramTest, PicturesAreTheSameFromAllCoordinateSystems) {
  for (const char* const system : {"0", "1", "2", "3"}) {
    const std::string model = std::string(system) + ".kob";
    ASSERT_EQ(Export(model, {"--fresh", "--coordinates", system}).status, 0);
    const Outcome outcome =
        Run({"picture", model, "-o", "-", "--coordinates", system, "--size", "90x60"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    Write(work_ / (model + ".png"), outcome.out);
    EXPECT_EQ(outcome.out, Content(work_ / "0.kob.png")) << system;
  }
  ASSERT_EQ(Export("a.qob").status, 0);
  ExpectRefusal(Run({"picture", "a.qob", "-o", "a.png", "--colour", "flags"}), "a.qob: ", "flags");
  ASSERT_EQ(Run({"picture", "a.qob", "-o", "a.png", "--size", "1x4096"}).status, 0);
  for (const char* const size : {"0x10", "10x4097", "10", "10x", "x10", "10x10x10", "-1x5", ""}) {
    const Outcome outcome = Run({"picture", "a.qob", "-o", "a.png", "--size", size});
    EXPECT_EQ(outcome.status, 2) << size;
    EXPECT_THAT(outcome.err, HasSubstr("--size: ")) << size;
  }
  EXPECT_EQ(Run({"picture", "a.qob"}).status, 2);
  EXPECT_EQ(Run({"picture", "a.qob", "-o", "a.png", "--sheet", "--size", "200x200"}).status, 0);
  EXPECT_EQ(Run({"picture", "a.qob", "-o", "a.png", "--sheet", "--size", "200x199"}).status, 2);
  // From within the level: triangles reach behind the camera.
  for (const char* const link : {"#batch=1&camera=5,1,5,30,-10,5", "camera=5e0,1,5,0,89,0"}) {
    EXPECT_EQ(Run({"picture", "a.qob", "-o", "a.png", "--camera", link}).status, 0) << link;
  }
  for (const char* const link : {"", "#", "camera=", "camera=1,2,3,4,5", "camera=1,2,3,4,5,6,7",
                                 "camera=1,2,3,nan,5,6", "camera=1e300,2,3,4,5,6", "xcamera=1"}) {
    const Outcome outcome = Run({"picture", "a.qob", "-o", "a.png", "--camera", link});
    EXPECT_EQ(outcome.status, 2) << link;
    EXPECT_THAT(outcome.err, HasSubstr("--camera: ")) << link;
  }
}

TEST_F(ProgramTest, FileManagersKnowWrittenFilesAndDrawThem) {
  const fs::path desktop = MAPEXPORT_SOURCE_DIR "/desktop";
  ASSERT_EQ(Export("a.kob").status + Export("b.qob").status, 0);
  ASSERT_EQ(Run({"scene", scene_, "-o", "c.scene.bin"}).status, 0);
  const std::string types = Content(desktop / "mapexport.xml");
  const std::regex match("offset=\"(\\d+)\" value=\"([^\"]+)\"");
  std::vector<std::string> found;
  for (std::sregex_iterator i(types.begin(), types.end(), match), end; i != end; ++i) {
    std::string value;
    const std::string text = (*i)[2];
    for (std::size_t at = 0; at < text.size(); ++at) {
      const bool isByte = text[at] == '\\';  // \xNN
      value +=
          isByte ? static_cast<char>(std::stoi(text.substr(at + 2, 2), nullptr, 16)) : text[at];
      if (isByte) at += 3;
    }
    found.emplace_back();
    for (const char* const file : {"a.kob", "b.qob", "c.scene.bin"}) {
      const bool is = Content(work_ / file).substr(std::stoul((*i)[1]), value.size()) == value;
      found.back() += is ? '1' : '0';
    }
  }
  EXPECT_THAT(found, testing::ElementsAre("110", "110", "001"));

  std::istringstream lines(Content(desktop / "mapexport.thumbnailer"));
  std::string line;
  while (!line.starts_with("Exec=mapexport ")) ASSERT_TRUE(std::getline(lines, line));
  std::istringstream words(line.substr(line.find(' ')));
  std::vector<std::string> arguments;
  for (std::string word; words >> word;) {
    if (word == "%sx%s") word = "128x128";
    if (word == "%o") word = "out.png";
    if (word == "%i") word = work_ / "a.kob";
    arguments.push_back(word);
  }
  Write(work_ / "out.png", "");  // file managers make it first
  EXPECT_EQ(Run(arguments).status, 0);
  EXPECT_THAT(Content(work_ / "out.png"), StartsWith("\x89PNG"));
  Write(work_ / "a.kob", Content(work_ / "a.kob").substr(0, 500));
  EXPECT_EQ(Run(arguments).status, 1);
}

}  // namespace
}  // namespace mapexport
