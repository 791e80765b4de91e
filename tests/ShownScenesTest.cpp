// Pictures and pages of scenes, which are exported aside for them.
#include "support/ProgramRun.h"

namespace mapexport {
namespace {

TEST_F(ProgramTest, AScenesPictureAndPageAreThoseOfItsExport) {
  fs::create_directory(root_ / "tmp");
  const auto there = [&] { setenv("TMPDIR", (root_ / "tmp").c_str(), 1); };
  Write(root_ / "mapexport.toml", "voxel-size = 5\n");
  const fs::path settings = root_ / "config/mapexport/settings.reg";
  // The settings remember the coordinates, the file gives the voxel size.
  ASSERT_EQ(Export("a.kob", {"--coordinates", "max", "--no-log"}).status, 0);
  const std::string remembered = Content(settings);
  for (const std::vector<std::string>& options :
       {std::vector<std::string>{"--seed", "1"}, {"--seed", "1", "--coordinates", "1"}}) {
    const std::string coordinates = options.size() == 2 ? "2" : "1";
    const auto draw = [&](const std::string& file, std::vector<std::string> more) {
      more.insert(more.begin(), {"picture", file, "-o", file == "b.kob" ? "b.png" : "s.png",
                                 "--colour", "batch"});
      return Run(more, there);
    };
    const Outcome drawn = draw(scene_, options);
    EXPECT_EQ(drawn.status, 0) << drawn.err;
    EXPECT_EQ(Content(settings), remembered);
    std::vector<std::string> more = options;
    more.insert(more.end(), {"--no-log", "--quiet"});
    EXPECT_EQ(Export("b.kob", more).err, drawn.err);
    Write(settings, remembered);
    ASSERT_EQ(draw("b.kob", {"--coordinates", coordinates}).status, 0);
    EXPECT_TRUE(Content(work_ / "s.png") == Content(work_ / "b.png")) << coordinates;
  }
  for (const fs::path& input : {fs::path(scene_), work_ / "a.kob"}) {
    const auto piped = [&] {
      there();
      dup2(open(input.c_str(), O_RDONLY), STDIN_FILENO);
    };
    const Outcome drawn = Run({"picture", "/dev/stdin", "-o", "s.png"}, piped);
    EXPECT_EQ(drawn.status, 0) << drawn.err;
  }
  ExpectRefusal(Run({"picture", "-", "-o", "bad.png"}), "standard input is /dev/stdin");
  EXPECT_EQ(Run({"picture", "a.kob", "-o", "s.JPG"}).err,
            "mapexport: warning: s.JPG: does not end in .png, but is a PNG picture\n");
  const std::string longName = std::string(244, 'x') + ".scene.json";
  fs::copy_file(scene_, work_ / longName);
  EXPECT_EQ(Run({"picture", longName, "-o", "s.png"}, there).status, 0);
  ExpectRefusal(
      Run({"picture", scene_, "-o", "bad.png"}, [] { setenv("TMPDIR", "/proc", 1); }),
      "the model of " + scene_ + ": cannot be written: no temporary folder can be made in /proc/");
  Write(work_ / "bad.scene.json", "{}");
  ExpectRefusal(Run({"picture", "bad.scene.json", "-o", "bad.png"}, there), "bad.scene.json");
  const Outcome viewed = Run({"view", scene_, "--compare", "a.kob", "-o", "s.html"}, there);
  if (viewed.err.find("without the page") == std::string::npos) {
    EXPECT_EQ(viewed.status, 0) << viewed.err;
    EXPECT_EQ(viewed.out, "wrote s.html\n");
    EXPECT_EQ(Run({"view", "/dev/stdin"}).status, 2);
    EXPECT_EQ(Run({"view", "a.kob", "--weld-distance", "1"}).status, 2);
    EXPECT_EQ(Run({"view", scene_, "--layout", "kob"}).status, 2);
  }
  EXPECT_EQ(Content(settings), remembered);
  EXPECT_TRUE(fs::is_empty(root_ / "tmp"));
  for (const char* const none : {"ExportDebug.txt", "bad.png"}) {
    EXPECT_FALSE(fs::exists(work_ / none));
  }
}

}  // namespace
}  // namespace mapexport
