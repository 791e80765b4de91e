// Options from mapexport.toml, and where options come from.
#include <regex>

#include <sys/stat.h>

#include "support/ProgramRun.h"

namespace mapexport {
namespace {

TEST_F(ProgramTest, OptionsBesideALevelCountUnlessTheCommandLineGivesThem) {
  fs::create_directories(work_ / "levels/castle");
  fs::rename(scene_, work_ / "levels/castle/keep.scene.json");
  scene_ = "levels/castle/keep.scene.json";
  Write(work_ / "levels/k.txt", "Floor: climbable\n");
  Write(work_ / "levels/mapexport.toml",
        "weld-distance = 0.125\nsplit = true\nsnap = true\n[\"castle/*\"]\nvoxel-size = 500\n"
        "split = false\nkeywords = \"k.txt\"\n[\"KEEP*\"]\nclean = false\n[\"keep*\"]\n"
        "voxel-size = 400\ncoordinates = 2\n");
  EXPECT_EQ(Export("a.kob", {"--texture-coordinates", "max"}).status, 0);
  const auto shown = [this](std::vector<std::string> options) {
    options.insert(options.begin(), {"export", scene_, "--show-options"});
    const std::string out = Run(options).out;
    return std::regex_replace(out, std::regex(" +"), " ");
  };
  EXPECT_THAT(shown({"--coordinates", "right-handed"}),
              AllOf(HasSubstr("\nweld-distance 0.125 levels/mapexport.toml, line 1\n"),
                    HasSubstr("\nvoxel-size 400 levels/mapexport.toml, line 11\n"),
                    HasSubstr("\nkeywords levels/k.txt levels/mapexport.toml, line 7\n"),
                    HasSubstr("\ncoordinates right-handed command line\n"),
                    HasSubstr("\nsplit off "), HasSubstr("\nclean on initial value\n"),
                    HasSubstr("\ntexture-coordinates max remembered in ")));
  EXPECT_THAT(shown({"--fresh"}), AllOf(HasSubstr("\nvoxel-size 1000 initial value\n"),
                                        HasSubstr("\nkeywords - initial value\n")));
  EXPECT_EQ(Export("b.kob", {"--depfile", "b.d", "--report", "r.json"}).status, 0);
  EXPECT_THAT(Content(work_ / "b.d"), HasSubstr("levels/mapexport.toml"));
  EXPECT_THAT(Content(work_ / "r.json"), HasSubstr("\"voxel-size\": \"400\""));
  const std::string model = Content(work_ / "b.kob");

  Write(work_ / "levels/castle/mapexport.toml", "");  // the nearest one alone counts
  EXPECT_THAT(shown({}), HasSubstr("\nvoxel-size 400 remembered in "));
  EXPECT_EQ(Export("levels/castle/mapexport.toml").status, 1);
  for (const auto& [text, piece] : std::vector<std::pair<std::string, std::string>>{
           {"\ndepfile = \"x\"", "line 2: \"depfile\" is not allowed here"},
           {"read-limit = 1", "line 1: \"read-limit\" is not allowed here"},
           {"wald = true", "did you mean \"weld\"?"},
           {"weld = 1", "weld must be true or false"},
           {"voxel-size = \"9\"", "voxel-size must be a number"},
           {"keywords = 3", "keywords must be a text"},
           {"keywords = \"a\\u0000b\"", "--keywords: the path has a NUL"},
           {"voxel-size = inf", "line 1: --voxel-size: \"inf\" is not"},
           {"[\"other*\"]\nup = \"x\"", "line 2: --up: \"x\" is not one of"},
           {"weld = ", "line 1: Error while parsing"}}) {
    Write(work_ / "levels/castle/mapexport.toml", text);
    ExpectRefusal(Export("b.kob"), "error: levels/castle/mapexport.toml: line ", piece);
    EXPECT_EQ(Export("c.kob", {"--fresh"}).status, 0);
  }
  EXPECT_EQ(Content(work_ / "b.kob"), model);
}

TEST_F(ProgramTest, FoldersThatMayNotBeSearchedHaveNoOptions) {
  const fs::path closed = work_ / "closed";
  fs::create_directories(closed / "levels");
  fs::permissions(closed / "levels", fs::perms::all);
  Write(closed / "levels/hall.scene.json", kScene);
  Write(closed / "mapexport.toml", "voxel-size = 500\n");
  // In a folder below one that is closed, as after `sudo -u` in one's own.
  const auto run = [&](const std::string& scene, const std::string& option) {
    Outcome outcome = Run({"export", scene, option, "--settings", "s.reg"}, [&] {
      const bool isRoot = getuid() == 0;
      if (chdir("closed/levels") != 0 || chmod(closed.c_str(), 0) != 0 ||
          (isRoot && (setgid(4321) != 0 || setuid(4321) != 0))) {
        _exit(98);
      }
    });
    fs::permissions(closed, fs::perms::owner_all);
    return outcome;
  };
  const Outcome shown = run("hall.scene.json", "--show-options");
  EXPECT_EQ(shown.status, 0) << shown.err;
  EXPECT_THAT(shown.out, testing::ContainsRegex("\nvoxel-size +1000 +initial value\n"));
  ExpectRefusal(run(closed / "levels/hall.scene.json", "hall.kob"),
                "levels/hall.scene.json: ", "Permission denied");
}

}  // namespace
}  // namespace mapexport
