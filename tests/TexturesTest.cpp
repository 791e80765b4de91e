// Textures: how they are found, reported and copied.
#include <algorithm>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "app/textures/ReadTextures.h"
#include "images/DecodeImage.h"
#include "support/ProgramRun.h"

namespace mapexport {
namespace {

TEST_F(ProgramTest, TexturesAreFoundAsEnginesFindThemAndCopied) {
  fs::create_directories(work_ / "levels/maps");
  for (const char* folder : {"a", "b", "out", "maps"}) fs::create_directory(work_ / folder);
  Write(work_ / "levels/l.obj",
        "mtllib l.mtl\nv 0 0 0\nv 90 0 0\nv 0 90 0\nusemtl A\nf 1 2 3\nusemtl B\nf 1 3 2\n"
        "usemtl C\nf 2 3 1\nusemtl D\nf 2 1 3\n");
  Write(work_ / "levels/l.mtl",
        "newmtl A\nmap_Kd maps\\Wall.v2.png\nnewmtl B\nmap_Kd ../maps/wood.tga\n"
        "newmtl C\nmap_Kd none.png\nnewmtl D\nmap_Kd ../maps/wood.tga\n");
  Write(work_ / "levels/maps/wall.v2.PNG", "12");
  Write(work_ / "maps/WOOD.png", "wood");
  Write(work_ / "maps/WOOD.dds.txt", "no picture");
  Write(work_ / "b/wood.jpg", "other wood");
  mkfifo((work_ / "a/wood.tga").c_str(), 0600);
  scene_ = "levels/l.obj";

  const auto report = [this](std::vector<std::string> options) {
    options.insert(options.end(), {"--fresh", "--report", "r.json", "--depfile", "l.d"});
    const Outcome outcome = Export("l.kob", options);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    return Content(work_ / "r.json") + Content(work_ / "l.d") + outcome.err;
  };
  EXPECT_THAT(report({}), AllOf(HasSubstr(R"({"name": "wood.tga", "materials": ["B", "D"]})"),
                                Not(HasSubstr("missing-texture"))));
  EXPECT_THAT(
      report({"--copy-textures", "out"}),
      AllOf(HasSubstr(R"("found": true, "file": "levels/maps/wall.v2.PNG", "bytes": 2})"),
            HasSubstr(R"("file": "levels/../maps/WOOD.png", "bytes": 4})"),
            HasSubstr(R"("materials": ["C"], "found": false})"), HasSubstr("missing-texture"),
            HasSubstr("levels/../maps/WOOD.png\n"), HasSubstr("out: 2 textures copied there")));
  EXPECT_THAT(Names(work_ / "out"), UnorderedElementsAre("wall.v2.PNG", "WOOD.png"));
  EXPECT_EQ(Content(work_ / "out/WOOD.png"), "wood");
  EXPECT_THAT(report({"--copy-textures", "out"}), Not(HasSubstr("textures-copied")));
  EXPECT_THAT(report({"--textures", "a", "--textures", "b"}),
              AllOf(HasSubstr(R"("file": "b/wood.jpg", "bytes": 10})"),
                    HasSubstr("\"wall.v2.png\" of material \"A\" is not found in a, b"),
                    HasSubstr("\"nodes\": [\n    \"defaultobject\"\n   ]}")));

  Write(work_ / "maps/WOOD.png", "new");
  EXPECT_THAT(report({"--copy-textures", "out"}), HasSubstr("another file with this name"));
  EXPECT_EQ(Content(work_ / "out/WOOD.png"), "wood");
  const std::string model = Content(work_ / "l.kob");
  EXPECT_EQ(Export("l.kob", {"--copy-textures", "b", "--strict"}).status, 1);
  EXPECT_THAT(Names(work_ / "b"), UnorderedElementsAre("wood.jpg"));
  EXPECT_EQ(Export("b/wood.jpg", {"--textures", "b"}).status, 1) << "it is read";
  EXPECT_EQ(Export("l.kob", {"--textures", "none"}).status, 1);
  EXPECT_EQ(Content(work_ / "b/wood.jpg"), "other wood");
  EXPECT_EQ(Content(work_ / "l.kob"), model);
}

TEST_F(ProgramTest, ThePageHasTheTexturesThatCanBeRead) {
  Write(work_ / "l.obj",
        "mtllib l.mtl\nv 0 0 0\nv 90 0 0\nv 0 90 0\nusemtl A\nf 1 2 3\nusemtl B\nf 1 3 2\n"
        "usemtl C\nf 2 3 1\nusemtl D\nf 2 1 3\n");
  Write(work_ / "l.mtl",
        "newmtl A\nmap_Kd a.png\nnewmtl B\nmap_Kd b.png\nnewmtl C\nmap_Kd c.png\n"
        "newmtl D\nmap_Kd a.bmp\n");
  fs::create_directory(work_ / "t");
  Write(work_ / "t/A.tga", std::string("\0\0\2\0\0\0\0\0\0\0\0\0\1\0\1\0\x18\0\1\2\3", 21));
  Write(work_ / "t/b.png", "\x89PNG\r\n\x1a\n damaged");
  scene_ = "l.obj";
  ASSERT_EQ(Export("l.kob", {"--fresh"}).status, 0);
  const Outcome outcome = Run({"view", "l.kob", "--textures", "t"});
  if (outcome.err.find("built without the page") != std::string::npos) GTEST_SKIP();
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.err,
              AllOf(HasSubstr("warning: l.kob: texture \"b.png\": t/b.png can't be read: "),
                    HasSubstr("texture \"c.png\" of material \"C\" is not found in t"),
                    Not(HasSubstr("a.png")), Not(HasSubstr("a.bmp"))));
  const std::string page = Content(work_ / "l.kob.html");
  EXPECT_THAT(page, HasSubstr("img-src data:;")) << "the policy stays as it is";
  EXPECT_EQ(Run({"view", "l.kob", "--textures", "none"}).status, 1);
  EXPECT_THAT(Run({"view", "l.kob", "--textures", "l.obj"}).err, HasSubstr("is not a folder"));
  EXPECT_EQ(Run({"view", "l.kob", "--textures", "t", "-o", "t/A.tga"}).status, 1) << "it is read";
  EXPECT_EQ(Content(work_ / "l.kob.html"), page);
}

TEST(Textures, AreShrunkUntilThePageHasRoomForAll) {
  Image noise = MakeImage(kTextureEdge, kTextureEdge);
  std::ranges::generate(noise.pixels, [random = std::minstd_rand()]() mutable {
    return static_cast<std::uint8_t>(random() >> 8);
  });
  std::map<std::string, Image> images;
  for (int i = 0; i < 33; ++i) images[std::to_string(i)] = noise;
  const auto encoded = PageTextures(std::move(images));
  EXPECT_EQ(encoded.size(), 33U);
  for (const auto& [name, png] : encoded) {
    EXPECT_EQ(DecodeImage(std::vector<std::uint8_t>(png.begin(), png.end())).width, 256U);
  }
}

}  // namespace
}  // namespace mapexport
