// Warnings as errors, and messages for programs.
#include <simdjson.h>

#include "support/ProgramRun.h"

namespace mapexport {
namespace {

TEST_F(ProgramTest, StrictExportsReplaceNothingWhenThereIsAWarning) {
  struct Case {
    std::vector<std::string> options;
    std::string codes;  ///< as the error lists them; empty when there is none
  };
  const std::vector<std::string> doubtful{"--weld-distance", "30", "--cxp", "none.cxp"};
  const std::vector<Case> cases{
      {{}, ""},  // notes are no warnings
      {doubtful, "cxp-unreadable, few-triangles-left, no-triangle, small-for-welding"},
      {{"--up", "y", "--allow", "no-triangle"}, "option-without-effect"},
      {{"--up", "y", "--allow", "no-triangle", "--allow", "option-without-effect"}, ""},
      {{"--settings", "/dev/full/s.reg"}, "settings-unreadable"},
      {{"--settings", "none/s.reg"}, ""},  // it can't be saved, which no output depends on
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(testing::PrintToString(each.options));
    for (const char* name : {"a.kob", "a.d", "r.json"}) Write(work_ / name, "old");
    std::vector<std::string> options = each.options;
    options.insert(options.end(), {"--strict", "--depfile", "a.d", "--report", "r.json"});
    if (std::ranges::find(options, "--settings") == options.end()) options.emplace_back("--fresh");
    const Outcome outcome = Export("a.kob", options);
    EXPECT_EQ(outcome.status, each.codes.empty() ? 0 : 1) << outcome.err;
    EXPECT_EQ(Content(work_ / "a.kob") == "old", !each.codes.empty());
    EXPECT_EQ(Content(work_ / "a.d") == "old", !each.codes.empty());
    const std::string report = Content(work_ / "r.json");
    EXPECT_EQ(report.find("sha256") == std::string::npos, !each.codes.empty());
    if (each.codes.empty()) continue;
    const std::string error =
        "a.kob: not exported: with --strict, warnings are errors: " + each.codes +
        "; --allow CODE lets one pass";
    EXPECT_THAT(outcome.err, EndsWith("\nmapexport: error: " + error + "\n"));
    EXPECT_THAT(report, AllOf(HasSubstr("\"error\": \"" + error), HasSubstr("\"status\": 1")));
    EXPECT_THAT(Names(work_), Not(testing::Contains(testing::StartsWith(".a.kob"))));
  }
}

TEST_F(ProgramTest, EveryLineOfMessagesIsAnObject) {
  std::string many = R"({"format": "mapexport-scene", "version": 1, "root": {"children": [{})";
  for (int i = 0; i < 1100; ++i) {  // more than 1 MiB of names
    many += R"(, {"userProperties": "FloorFace", "name": ")" + std::string(1000, 'n') + "\"}";
  }
  Write(work_ / "many.scene.json", many + "]}}");
  const std::string nodes = "nodes.scene.json";
  Write(work_ / nodes, R"({"format": "mapexport-scene", "version": 1,
    "root": {"children": [
      {"name": "exclude", "children": [{"name": "below"}]},
      {"name": "Empty", "object": "mesh", "children": [{"name": "lost"}]},
      {"name": "Wall", "mesh": {"vertices": [[0, 0, 0], [100, 0, 0], [0, 100, 0]],
        "faces": [[0, 1, 2], [0, 0, 0], [0, 0, 0]]}}]}})");
  const std::string creased = "creased.scene.json";  // in four smooth faces around vertex 0
  Write(work_ / creased, R"({"format": "mapexport-scene", "version": 1, "root": {"name": "Tent",
    "mesh": {"vertices": [[0, 0, 9], [9, 0, 0], [0, 9, 0], [-9, 0, 0], [0, -9, 0]],
      "faces": [[0, 1, 2], [0, 2, 3], [0, 3, 4], [0, 4, 1]],
      "cornerNormals": [[0, 0, 1], [0, 9, 1], [0, 1, 1], [0, 0, 1], [0, 1, 1], [-1, 0, 1],
        [0, 0, 1], [-1, 0, 1], [0, -1, 1], [0, 0, 1], [0, -1, 1], [0, -9, 1]]}}})");
  const std::vector<std::pair<std::vector<std::string>, std::vector<std::string>>> cases{
      {{"export", creased, "a.kob", "--fresh"},
       {R"("code": "left-out", "text": "creased.scene.json: left out: 1 hard edge within a smooth )"
        R"(surface", "scene": "creased.scene.json", "nodes": ["Tent"], "count": 1})"}},
      {{"export", nodes, "a.kob", "--fresh"},
       {R"("nodes": ["exclude", "below"], "count": 2)", R"("nodes": ["lost"], "count": 1)",
        R"("nodes": ["Wall"], "count": 2)",
        R"("output": "a.kob", "bytes": 395, "triangles": 1, "batches": 1, )"
        R"("collisionTriangles": 0})"}},
      {{"export", nodes, "--output-folder", ".", "--fresh"},
       {R"("output": "./nodes.kob", "bytes": 395)"}},
      {{"export", scene_, "a.kob", "--fresh", "--verbose", "--weld-distance", "0.51"},
       {"\"message-box\", \"text\": \"Results: ", "\"small-for-welding\"", "\"exported\"",
        "\"text\": \"times: ", "\"warning\"", "\"count\": 1}", "\"scene\": \"/"}},
      {{"export", "no\x1b\"ne.fbx", "a.kob"},
       {R"("error", "code": "failed", "text": "no\u001b\"n)"}},
      {{"export", scene_, "a.kob", "--weld-distance", "x"}, {"\"wrong-usage\"", "\"usage\""}},
      {{"export", scene_}, {"\"wrong-usage\""}},
      {{"export", scene_, "many.scene.json", "--output-folder", "out", "--verbose"},
       {"\"version ", "\"text\": \"times: ", "\"near-keyword\"", "\"summary\""}},
  };
  for (auto [arguments, pieces] : cases) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    arguments.insert(arguments.end(), {"--messages", "json"});
    const std::string err = Run(arguments).err;
    for (const std::string& piece : pieces) EXPECT_THAT(err, HasSubstr(piece));
    std::istringstream lines(err);
    for (std::string line; std::getline(lines, line);) {
      simdjson::dom::parser parser;
      const simdjson::dom::element object = parser.parse(line);
      for (const char* member : {"severity", "code", "text"}) {
        EXPECT_TRUE(object[member].is_string()) << line;
      }
    }
  }
}

}  // namespace
}  // namespace mapexport
