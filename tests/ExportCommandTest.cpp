// What `export` writes, says and remembers, by the built program.
#include <fmt/format.h>
#include <simdjson.h>

#include "app/export/RunReport.h"
#include "support/ProgramRun.h"

namespace mapexport {
namespace {

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
      ExpectRefusal(outcome, "");
      EXPECT_THAT(outcome.err, Not(HasSubstr("\x1b")));
    }
  }
  EXPECT_EQ(Export(scene_).status, 1) << "the scene itself";
  EXPECT_EQ(Content(scene_), kScene);
  EXPECT_EQ(Content(work_ / "old.qob"), "old");
  EXPECT_EQ(Names(work_).size(), 4U);
  EXPECT_FALSE(fs::exists(root_ / "config"));
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
  EXPECT_THAT(loud.err,
              AllOf(HasSubstr("Results: 3 faces, 7 vertices"), HasSubstr("(Change = "),
                    HasSubstr("1 degenerate triangle was left out"),
                    EndsWith("\nText Scene Export: Scene exported successfully.\n"
                             "mapexport: note: a.qob: 3 triangles in 2 batches, 661 bytes\n")));
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
                                            "distance, 0.51: welding may merge separate parts\n");
  EXPECT_EQ(Export("a.qob", {"--fresh", "--quiet", "--weld-distance", "9", "--no-weld"}).err, "");
  const std::string infinite = R"("Welding Distance"="inf")";
  Write(work_ / "inf.reg",
        "REGEDIT4\n\n[HKEY_LOCAL_MACHINE\\Software\\Corvantis\\Talvern\\Exporter]\n" + infinite);
  EXPECT_THAT(Export("a.qob", {"--settings", "inf.reg", "--quiet"}).err,
              HasSubstr("the weld distance, inf: welding may merge"));
  EXPECT_THAT(Content(work_ / "inf.reg"), HasSubstr(infinite));
  EXPECT_EQ(Export("a.qob", {"--fresh", "--quiet", "--up", "z", "--scale", "2"}).err,
            "mapexport: warning: " + scene_ +
                ": --up, --scale and --hidden have no effect: a scene file holds the scene as the "
                "exporter "
                "sees it\n");
}

TEST_F(ProgramTest, ListsBeyond16BitIndicesEndWith4) {
  std::string vertices;
  std::string faces;
  for (int i = 0; i < 21846; ++i) {
    vertices += fmt::format("[{0},0,0],[{0},1,0],[{0},0,1],", i);
    faces += fmt::format("[{},{},{}],", 3 * i, 3 * i + 1, 3 * i + 2);
  }
  vertices.pop_back();
  faces.pop_back();
  scene_ = work_ / "long.scene.json";
  Write(scene_,
        R"({"format":"mapexport-scene","version":1,"root":{"children":[{"name":"Big","mesh":)"
        R"({"vertices":[)" +
            vertices + R"(],"faces":[)" + faces +
            R"(]}},{"name":"Excluded","mesh":{"vertices":[[0,0,0]],"faces":[[0,0,0]]}}]}})");
  const Outcome exported =
      Export("long.qob", {"--fresh", "--no-weld", "--voxel-size", "1e6", "--quiet"});
  EXPECT_EQ(exported.status, 4);
  EXPECT_THAT(exported.err, AllOf(HasSubstr("vertices: 65538 entries, 2 more than"),
                                  HasSubstr("corners: 65538 entries, 2 more than")));
  EXPECT_EQ(Lines(exported.err), 2) << "each list is told of once";
  EXPECT_THAT(exported.err,
              AllOf(HasSubstr("most vertices in \"Big\" (65538); the export's --split"),
                    HasSubstr("most triangles in \"Big\" (21846)\n")));
  const std::vector<std::string> strict{"--fresh",  "--no-weld",  "--voxel-size", "1e6",
                                        "--strict", "--messages", "json"};
  EXPECT_THAT(Export("none.qob", strict).err, AllOf(HasSubstr("errors: list-too-long (2); --allow"),
                                                    HasSubstr(R"("nodes": ["Big"], "count": 1})")));
  EXPECT_FALSE(fs::exists(work_ / "none.qob"));
  const Outcome inspected = Run({"inspect", "long.qob", "--summary"});
  EXPECT_EQ(inspected.status, 4);
  EXPECT_THAT(inspected.err, HasSubstr("65538"));
  const Outcome converted = Run({"convert", "long.qob", "long.stl"});
  EXPECT_EQ(converted.status, 4);
  EXPECT_EQ(converted.err, inspected.err);
  EXPECT_TRUE(fs::exists(work_ / "long.stl"));
  const Outcome viewed = Run({"view", "long.qob"});
  EXPECT_EQ(viewed.status, viewed.err.find("without the page") == std::string::npos ? 4 : 1);
  EXPECT_THAT(inspected.out, Not(IsEmpty()));

  const Outcome split = Export("split.qob", {"--fresh", "--no-weld", "--quiet", "--split"});
  EXPECT_EQ(split.status, 0);
  EXPECT_EQ(split.err, "");
  EXPECT_THAT(Run({"inspect", "split.qob"}).out,
              HasSubstr("21846 triangles in 22 batches, 65538 vertices\n"));
  ASSERT_EQ(Run({"convert", "split.qob", "split.gltf"}).status, 0);
  EXPECT_THAT(Content(work_ / "split.gltf"),
              AllOf(HasSubstr("\"NONE\""), HasSubstr("\"NONE_2\""), Not(HasSubstr("NONE_3"))));
  for (const std::string number : {"2", "65537", "-1", "many"}) {
    EXPECT_EQ(Export("none.qob", {"--longest-list", number}).status, 2);
  }
}

TEST_F(ProgramTest, ForeignNamesBringNoControlCharacters) {
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
              HasSubstr("m(1): a --depfile cannot hold"));
  for (const std::string output : {"a;b.qob", "a\nb.qob"}) {
    const Outcome outcome = Export(output, {"--depfile", "old.d"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, HasSubstr("a --depfile cannot hold"));
    EXPECT_FALSE(fs::exists(work_ / output));
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
              AllOf(HasSubstr("t.kob: welding and slivers took 1 of 1 triangles"),
                    HasSubstr("; a larger --scale keeps more\n"),
                    HasSubstr("t.kob: there is no triangle in it")));
}

TEST_F(ProgramTest, KeywordFilesAndImportOptionsServeBothCommands) {
  Write(work_ / "level.obj", std::string("o Floor.1\n") + kObject);
  Write(work_ / "level.mtl", "newmtl Red\n");
  Write(work_ / "k.txt", "Floor*: notrendered\nRoof: climbable\n");
  for (const std::string& scene : {std::string("level.obj"), scene_}) {
    SCOPED_TRACE(scene);
    const auto run = [&](std::vector<std::string> line) {
      line.insert(line.end(), {"--keywords", "k.txt"});
      if (scene != scene_) {
        line.insert(line.end(), {"--up", "y", "--scale", "2.5", "--read-limit", "0"});
      }
      return Run(line);
    };
    const Outcome exported =
        run({"export", scene, "a.kob", "--fresh", "--quiet", "--depfile", "a.d", "--seed", "1"});
    EXPECT_EQ(exported.err, "mapexport: warning: k.txt: line 2: no node is named like \"Roof\"\n");
    EXPECT_THAT(Content(work_ / "a.d"), HasSubstr(scene + " \\\n  k.txt"));
    EXPECT_THAT(Run({"inspect", "a.kob", "--json"}).out, HasSubstr("\"flags\": 4"));
    EXPECT_THAT(run({"scene", scene, "-o", "b.scene.json"}).err, EndsWith(exported.err));
    const std::string upright = "[2.5, 0, 0], [0, 0, 2.5], [0, -2.5, 0]";
    EXPECT_EQ(Content(work_ / "b.scene.json").find(upright) != std::string::npos, scene != scene_);
    EXPECT_EQ(Run({"export", "b.scene.json", "b.kob", "--fresh", "--seed", "1"}).status, 0);
    EXPECT_EQ(Content(work_ / "a.kob"), Content(work_ / "b.kob"));
  }
  Write(work_ / "bad.txt", "Floor\n");
  ExpectRefusal(Export("a.kob", {"--keywords", "bad.txt"}), "error: bad.txt: line 1: ");
  ExpectRefusal(Export("a.kob", {"--keywords", "none.txt"}), "error: none.txt: can't be read");
  ExpectRefusal(Run({"scene", scene_, "--keywords", "k.txt", "-o", "k.txt"}), "k.txt: ");
}

TEST_F(ProgramTest, LossesAreToldWithAdvice) {
  // 1152 triangles, a quarter of a metre wide.
  std::string grid;
  for (int y = 0; y < 25; ++y) {
    for (int x = 0; x < 25; ++x) grid += fmt::format("v {} {} 0\n", x * 0.25, y * 0.25);
  }
  for (int y = 0; y < 24; ++y) {
    for (int x = 1; x < 25; ++x) {
      const int v = y * 25 + x;
      grid += fmt::format("f {} {} {} {}\n", v, v + 1, v + 26, v + 25);
    }
  }
  Write(work_ / "grid.obj", grid);
  const auto exported = [this](std::vector<std::string> options) {
    options.insert(options.begin(), {"export", "grid.obj", "a.kob", "--fresh", "--quiet"});
    return Run(options).err;
  };
  EXPECT_THAT(exported({}), AllOf(HasSubstr("took 1152 of 1152 triangles: "),
                                  HasSubstr("; looks like metres: --scale 100\n")));
  EXPECT_THAT(exported({"--weld-distance", "1"}), HasSubstr("a smaller --weld-distance"));
  EXPECT_EQ(exported({"--scale", "100"}), "");
  const std::string cells = exported({"--scale", "100", "--voxel-size", "20"});
  EXPECT_THAT(cells, AllOf(HasSubstr("1152 triangles are in "), HasSubstr("; --voxel-size 500 ")));
  EXPECT_EQ(exported({"--scale", "100", "--voxel-size", "500"}), "");
}

TEST_F(ProgramTest, WhatIsDoubledOrNotVisitedIsTold) {
  std::string text = kScene;
  text.insert(text.find("\"diffuse\""), R"("twoSided":true,)");
  text.insert(text.rfind("]}"), R"(,{"name":"Excluded","children":[{}]},
 {"name":"Empty","object":"mesh","mesh":null,"children":[{"children":[{}]}]})");
  Write(scene_, text);
  for (const std::string layout : {"a.kob", "a.qob"}) {
    for (const std::string weld : {"--weld", "--no-weld"}) {
      EXPECT_THAT(Export(layout, {"--fresh", weld}).err,
                  HasSubstr("note: " + layout + ": 2 triangles doubled: 1 two-sided material;"));
    }
  }
  const Outcome once = Export("a.kob", {"--fresh", "--one-sided", "--report", "r.json"});
  EXPECT_THAT(once.err, AllOf(HasSubstr("2 nodes left out: named \"exclude...\""),
                              HasSubstr("2 nodes left out: the exporter does not visit"),
                              Not(HasSubstr("doubled"))));
  EXPECT_THAT(Content(work_ / "r.json"),
              AllOf(HasSubstr("\"excluded\": 2"), HasSubstr("\"unreached\": 2")));
}

TEST(RunReportTest, SumsOfCountsDoNotWrap) {
  RunReport report;
  report.leftOut = {{RemarkKind::kWarning, "left-out-points", "", ~std::uint64_t{0}},
                    {RemarkKind::kWarning, "left-out-points", "", 5}};
  std::ostringstream out;
  WriteReport(report, {}, {}, out);
  EXPECT_THAT(out.str(), HasSubstr("\"points\": 18446744073709551615"));
}

}  // namespace
}  // namespace mapexport
