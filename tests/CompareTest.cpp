// What `diff` says of two models that differ in one thing.
#include <regex>

#include <nlohmann/json.hpp>

#include "compare/WriteDifference.h"
#include "support/ModelFiles.h"
#include "support/Testing.h"
#include "system/DistinctNames.h"

namespace mapexport {
namespace {

using nlohmann::json;

/// The output as text and as JSON, which must agree on the result.
std::pair<std::string, json> Compare(const ModelFile& a, const ModelFile& b) {
  Both<TriangleMarks> marks;
  const ModelDifference difference = CompareModels(a, b, &marks);
  for (std::size_t i = 0; i < marks.size(); ++i) {
    std::vector<std::uint8_t> all = marks[i].drawn;
    std::ranges::copy(marks[i].undrawn, std::back_inserter(all));
    EXPECT_EQ(all.size(), difference.triangles.count[i]);
    EXPECT_EQ(std::ranges::count(all, 1), difference.triangles.only[i]);
    EXPECT_EQ(marks[i].undrawn.size(), difference.undrawn.count[i]);
    EXPECT_EQ(std::ranges::count(marks[i].undrawn, 1), difference.undrawn.only[i]);
  }
  std::ostringstream text;
  std::ostringstream document;
  WriteDifferenceText(difference, text);
  WriteDifferenceJson(difference, {"a.kob", "b.kob"}, document);
  const json parsed = json::parse(document.str());
  constexpr const char* kResults[] = {"equal", "order", "different"};
  constexpr const char* kLines[] = {"equal: ", "only the order differs: ", "different: "};
  const auto result = static_cast<std::size_t>(difference.result);
  EXPECT_EQ(parsed["result"], kResults[result]);
  EXPECT_THAT(text.str(), StartsWith(kLines[result]));
  return {text.str(), parsed};
}

TEST(CompareTest, FilesHaveTheShortestNamesThatDiffer) {
  using Names = Both<std::string>;
  EXPECT_EQ(DistinctNames("a/x.kob", "a/y.kob"), (Names{"x.kob", "y.kob"}));
  EXPECT_EQ(DistinctNames("/a/c/x.kob", "b//c/x.kob"), (Names{"a/c/x.kob", "b/c/x.kob"}));
  EXPECT_EQ(DistinctNames("x.kob", "/b/x.kob"), (Names{"x.kob", "b/x.kob"}));
  EXPECT_EQ(DistinctNames("/x.kob", "x.kob"), (Names{"/x.kob", "x.kob"}));
  EXPECT_EQ(DistinctNames("a/x.kob", "a/x.kob"), (Names{"x.kob", "x.kob"}));
}

TEST(CompareTest, OneChangeIsToldAsWhatItIs) {
  struct Case {
    const char* what;
    std::function<void(ModelFile&)> change;
    std::string result;
    std::vector<std::string> lines;  ///< parts of the text, blanks as one
  };
  const auto group = [](ModelFile& model) -> ModelGroup& { return model.groups[0]; };
  const std::vector<Case> cases{
      {"nothing", [](ModelFile&) {}, "equal", {"equal: 4 triangles"}},
      {"the order of materials",
       [&](ModelFile& model) {
         std::swap(model.materials[0], model.materials[1]);
         group(model).batches[0].material = 0;
       },
       "order",
       {"the same 4 triangles"}},
      {"the order of faces in a batch",
       [&](ModelFile& model) {
         std::swap(group(model).batches[0].faces[0], group(model).batches[0].faces[1]);
         std::swap(group(model).faces[0].position, group(model).faces[2].position);
       },
       "order",
       {}},
      {"a batch less, a group more",
       [&](ModelFile& model) {
         ModelGroup second = group(model);
         second.header.name = second.outerHeader.name = "Yard_2";
         second.batches.erase(second.batches.begin());
         second.faces = {{{2, 1, 0}, 0, 0, 0}};
         second.surfaceSets = {{"NONE", 0x11, {0}}};
         second.planes.clear();
         group(model).batches.pop_back();
         group(model).faces.pop_back();
         group(model).surfaceSets[0].faces.pop_back();
         model.groups.push_back(second);
       },
       "order",
       {"groups 1 2"}},
      {"an unused vertex",
       [&](ModelFile& model) { group(model).vertices.emplace_back(); },
       "order",
       {"vertices 4 5"}},
      {"a moved vertex",
       [&](ModelFile& model) { group(model).vertices[3].x = -1; },
       "different",
       {"1 triangle only in A, 1 only in B", "~ Grey 2 2 1 1 bounds (0, 0, 0) to",
        "~ static_crates [(static node)] 1 1 1 1"}},
      {"the sign of a zero",
       [&](ModelFile& model) { group(model).batches[0].faces[0].plane.d = 0; },
       "different",
       {"~ Grey 2 2 1 1", "~ NONE [climbable floorface] 2 2 1 1"}},
      {"a colour of a corner",
       [&](ModelFile& model) { group(model).batches[1].corners[0].colour.a = 0; },
       "different",
       {"~ (no material) 1 1 1 1"}},
      {"a collision point",
       [&](ModelFile& model) { group(model).collisionPoints[0].x = 0; },
       "different",
       {"~ (collision only) 1 1 1 1 bounds (5, 5, 5) to (6, 6, 5) -> (0, 5, 5) to (6, 6, 5)",
        "~ NONE [notrendered]"}},
      {"a material's values",
       [](ModelFile& model) {
         model.materials[0].textureName = "a\x1b.bmp";
         model.materials[0].scalar2 = 0;
         model.materials[0].twoSided = false;
       },
       "different",
       {"the same 4 triangles",
        "~ Brick 0 0 0 0 textureName \"brick.bmp\" -> \"a\\u001B.bmp\"; scalar2 -0 -> 0; "
        "twoSided yes -> no"}},
      {"a material's name",
       [](ModelFile& model) { model.materials[1].header.name = "Gray"; },
       "different",
       {"- Grey 2 0 2 0", "+ Gray 0 2 0 2"}},
      {"a material twice",
       [](ModelFile& model) { model.materials.push_back(model.materials[0]); },
       "different",
       {"the same 4 triangles", "+ Brick 0 0 0 0"}},
      {"a set's flags",
       [&](ModelFile& model) { group(model).surfaceSets[0].flags = 0x10; },
       "different",
       {"the same 4 triangles",
        "~ NONE [climbable floorface] 2 2 0 0 flags climbable floorface -> "
        "floorface"}},
      {"a set's name",
       [&](ModelFile& model) { group(model).surfaceSets[1].name = "static_door"; },
       "different",
       {"- static_crates [(static node)] 1 0 1 0", "+ static_door [(static node)] 0 1 0 1"}},
      {"the level's name",
       [&](ModelFile& model) {
         group(model).header.name = group(model).outerHeader.name = "Garden";
       },
       "different",
       {"name Yard Garden"}},
      {"the layout",
       [](ModelFile& model) { model = Yard(ModelLayout::kQob); },
       "different",
       {"1 triangle only in A, 0 only in B", "layout kob qob"}},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.what);
    ModelFile changed = Yard(ModelLayout::kKob);
    each.change(changed);
    ASSERT_EQ(Lines(Read(changed)), "");
    auto [text, document] = Compare(Yard(ModelLayout::kKob), changed);
    EXPECT_EQ(document["result"], each.result);
    text = std::regex_replace(text, std::regex(" +"), " ");
    for (const std::string& line : each.lines) EXPECT_THAT(text, HasSubstr(line));
  }
}

TEST(CompareTest, JsonHoldsTheValues) {
  ModelFile changed = Yard(ModelLayout::kKob);
  changed.materials[1].diffuse.r = std::numeric_limits<float>::infinity();
  changed.groups[0].surfaceSets[1].name = "x";
  changed.groups[0].vertices[3].x = std::numeric_limits<float>::quiet_NaN();
  const json document = Compare(Yard(ModelLayout::kKob), changed).second;
  EXPECT_EQ(document["a"], json::parse(R"({"file":"a.kob","layout":"kob","name":"Yard","groups":1,
                                           "batches":2,"vertices":4})"));
  EXPECT_EQ(document["materials"], json::parse(R"([{"name":"Grey","change":"changed",
      "fields":{"diffuse":[[0,0,0,0],["Infinity",0,0,0]]},"triangles":{"a":2,"b":2,"onlyA":1,
      "onlyB":1,"boundsA":[[0,0,0],[1,1,0.5]],"boundsB":[[0,0,0],[1,1,0]]}}])"));
  EXPECT_EQ(document["surfaceSets"][0]["flagsB"], nullptr);
  EXPECT_EQ(document["surfaceSets"][1]["flagsB"], 128);
  EXPECT_EQ(document["surfaceSets"][1]["triangles"]["boundsA"], nullptr);
}

TEST(CompareTest, ListsWithCutIndicesAreComparedAsTheyAre) {
  const ModelFile huge = Huge(140000, ModelLayout::kKob);
  EXPECT_EQ(Compare(huge, huge).second["result"], "equal");
  ModelFile changed = huge;
  changed.groups[0].batches[0].faces.back().plane.d = 1;
  const json document = Compare(huge, changed).second;
  EXPECT_EQ(document["triangles"]["onlyB"], 1);
  EXPECT_EQ(document["collisionOnly"]["onlyB"], 0);
}

}  // namespace
}  // namespace mapexport
