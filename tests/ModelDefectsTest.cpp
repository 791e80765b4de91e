// Tests of what the model-file reader finds wrong, and where.
#include <regex>
#include <variant>

#include "modelreader/OverlongLists.h"
#include "modelreader/ReadModelFile.h"
#include "support/ModelFiles.h"
#include "support/Testing.h"

namespace mapexport {
namespace {

using testing::Field;
using enum ModelFault;
using enum reader::Fault;

/// A single change of a sound file, and the first problem that it must bring.
struct Defect {
  std::string at;  ///< place whose field changes
  std::size_t plus = 0;
  std::uint64_t value = 0;
  std::size_t size = 4;
  ModelProblemCode code{};
  std::string place;
  std::string text;  ///< a piece of the problem's text
};

void PrintTo(const Defect& defect, std::ostream* out) {
  *out << defect.at << " + " << defect.plus << " = " << defect.value;
}

/// As the strict reader spells it, but without an entry's index.
std::string PlaceOf(const reader::Error& error) {
  std::string place;
  for (const auto& [list, index] :
       {std::pair("materials[", error.material), std::pair("groups[", error.group),
        std::pair("batches[", error.batch), std::pair("surfaceSets[", error.surfaceSet)}) {
    if (index >= 0) place += list + std::to_string(index) + "].";
  }
  return place + error.field;
}

class SingleDefect : public ::testing::TestWithParam<Defect> {};

const std::string kBatch = "groups[0].batches[0]";
const std::string kFace1 = "groups[0].faces[1]";
const std::string kFace2 = "groups[0].faces[2]";
const std::string kSet0 = "groups[0].surfaceSets[0]";

const Defect kDefects[] = {
    {"startTag", 4, 'b', 1, kNoStartTag, "startTag", "BeginModel"},
    {"endTag", 4, 'e', 1, kNoEndTag, "endTag", "EndModel"},
    {"materialChunk.id", 0, 7, 4, kChunkId, "materialChunk.id", "is 7, must be 8"},
    {"geometryChunk.name", 4, 'g', 1, kChunkName, "geometryChunk.name", "\"geometryList\""},
    {"geometryChunk.size", 0, 4, 4, kCountTooLarge, "groups", "left in geometryChunk"},
    {"geometryChunk.size", 2, 1, 1, kSizeTooLarge, "geometryChunk.size", "left in the file"},
    {"materialChunk.size", 1, 5, 1, kSizeTooLarge, "materialChunk.size", "left in the file"},
    {"materials", 0, 0x10000, 4, kCountTooLarge, "materials", "65536 entries"},
    {"materials", 0, 1, 4, kSizeLeftOver, "materialChunk.size", "what it counts takes"},
    {"materials[0].typeCode", 0, 3, 4, kTypeCode, "materials[0].typeCode", "is 3, must be 2"},
    {"materials[0].versionText", 4, 27, 1, kVersionText, "materials[0].versionText",
     "\"\\u001Bersion\""},
    {"materials[1].version", 0, 2, 4, kVersion, "materials[1].version", "is 2, must be 1"},
    {"materials[0].name", 0, 0, 4, kTextEmpty, "materials[0].name", "length 0"},
    {"materials[0].name", 0, 5, 4, kTextNoEnd, "materials[0].name", "the last is 107"},
    {"materials[0].name", 5, 0, 1, kTextNul, "materials[0].name", "byte 1 of its 6"},
    {"materials[0].name", 0, ~0u, 4, kCut, "materials[0].name", "needs 4294967295 bytes"},
    {"materials[0].size", 0, 0, 4, kCut, "materials[0].textureName", "0 are left in materials[0]"},
    {"materials[0].size", 0, 84, 4, kSizeLeftOver, "materials[0].size", "is 84"},
    {"materials[0].twoSided", 0, 2, 1, kBool, "materials[0].twoSided", "is 2, must be 0 or 1"},
    {"groups[0].typeCode", 0, 35, 4, kTypeCode, "groups[0].typeCode", "is 35, must be 3"},
    {"groups[0].outer.typeCode", 0, 2, 4, kTypeCode, "groups[0].outer.typeCode", "must be 35"},
    {"groups[0].outer.typeCode", 0, 3, 4, kOtherLayout, "groups[0].outer.typeCode", "layout qob"},
    {"groups[0].outer.version", 0, 1, 4, kVersion, "groups[0].outer.version", "must be 2"},
    {"groups[0].outer.name", 4, 'y', 1, kOuterName, "groups[0].outer.name", "\"yard\""},
    {"groups[0].size", 0, 40, 4, kCountTooLarge, "groups[0].vertices", "left in groups[0]"},
    {"groups[0].size", 2, 1, 1, kSizeTooLarge, "groups[0].size", "left in groups[0].outer"},
    {"groups[0].vertices", 0, ~0u, 4, kCountTooLarge, "groups[0].vertices", "of at least 12 bytes"},
    {kBatch + ".material", 0, 2, 4, kMaterialIndex, kBatch + ".material", "has 2 materials"},
    {kBatch + ".material", 0, ~1u, 4, kMaterialIndex, kBatch + ".material", "is -2"},
    {kBatch + ".vertexIndices", 8, 4, 2, kVertexIndex, kBatch + ".vertexIndices[1]",
     "corner 1 is vertex 4, but the group has 4"},
    {kBatch + ".cornerIndices", 4, 9, 2, kCornerIndex, kBatch + ".cornerIndices[0]",
     "corner 2 is entry 9, but the batch has 4"},
    {kBatch + ".faces", 0, 0, 4, kBatchEmpty, kBatch + ".faces", "a batch has at least one"},
    {kBatch + ".corners", 0, 0, 4, kBatchEmpty, kBatch + ".corners", "a batch has at least one"},
    {kSet0 + ".flags", 0, 0x111, 4, kSetFlags, kSet0 + ".flags", "is 0x111, must be"},
    {"groups[0].collisionPoints", 0, 9999, 4, kCountTooLarge, "groups[0].collisionPoints", "9999"},
    {kFace1, 2, 3, 2, kPointIndex, kFace1 + ".vertices", "corner 1 is collision point 3"},
    {kFace1, 6, 1, 2, kPlanePosition, kFace1 + ".position", "is 1, must be 0"},
    {kFace1, 12, 0, 4, kPositionTaken, kFace1 + ".position", "earlier face in batch 0"},
    {kFace2, 0, 1, 2, kFaceVertices, kFace2 + ".vertices", "are 1, 2, 3, but batch 0 has 0, 2, 3"},
    {kFace2, 6, 0xFFFF, 2, kBatchPosition, kFace2 + ".position", "is 65535, but batch 0 has 2"},
    {kFace2, 8, 3, 4, kSurfaceSetIndex, kFace2 + ".surfaceSet", "has 3 surface sets"},
    {kFace2, 8, 0, 4, kNotInSet, kFace2 + ".surfaceSet", "is 0, but that surface set"},
    {kFace2, 12, 2, 4, kBatchIndex, kFace2 + ".batch", "has 2 batches"},
    {kFace2, 12, ~1u, 4, kBatchIndex, kFace2 + ".batch", "is -2"},
    {kSet0 + ".flags", 0, 4, 4, kDrawnSet, "groups[0].faces[0].batch", "\"notrendered\""},
    {"groups[0].surfaceSets[2].flags", 0, 0, 4, kUndrawnSet, kFace1 + ".batch", "(flags 0x00)"},
    {kSet0 + ".faces", 4, 4, 2, kFaceIndex, kSet0 + ".faces[0]", "has 4 faces"},
    {kSet0 + ".faces", 4, 3, 2, kListedAgain, kSet0 + ".faces[1]", "is face 3"},
    {kSet0 + ".faces", 4, 2, 2, kInOtherSet, kSet0 + ".faces[0]", "names surface set 1"},
};

TEST_P(SingleDefect, IsToldWithItsPlace) {
  const Defect& defect = GetParam();
  FileBytes file = BuildFile(Yard(ModelLayout::kKob));
  file.Put(file.offsets.at(defect.at) + defect.plus, defect.value, defect.size);
  const ModelReadResult result = ReadModelBytes(file.bytes, ModelLayout::kKob);
  EXPECT_FALSE(result.Sound());
  ASSERT_FALSE(result.problems.empty());
  const ModelProblem& first = result.problems.front();
  EXPECT_EQ(first.code, defect.code) << Lines(result);
  EXPECT_EQ(first.place, defect.place) << Lines(result);
  EXPECT_THAT(first.text, HasSubstr(defect.text));
  ASSERT_TRUE(first.offset.has_value());
  EXPECT_LE(*first.offset, file.bytes.size());

  // Engines get the same, but of the face table only what leads out of a list.
  reader::Model model;
  reader::Error error;
  const bool opened = model.Open(file.bytes.data(), file.bytes.size(), ModelLayout::kKob, &error);
  if (std::holds_alternative<reader::Fault>(defect.code)) {
    EXPECT_FALSE(opened);
    EXPECT_EQ(ModelProblemCode(error.fault), defect.code);
    EXPECT_EQ(error.offset, first.offset);
    const std::regex withoutNames("outer\\.|[a-z]+Chunk\\.");
    const std::string place = std::regex_replace(first.place, withoutNames, "");
    EXPECT_THAT(place, StartsWith(PlaceOf(error)));
  } else {
    EXPECT_EQ(error.fault, opened ? kNone : kFaceTable);
    EXPECT_EQ(error.group, opened ? -1 : 0);
  }
}

INSTANTIATE_TEST_SUITE_P(Defects, SingleDefect, ::testing::ValuesIn(kDefects));

TEST(ModelDefectsTest, DisagreeingListsAreErrors) {
  ModelFile fewPlanes = Yard(ModelLayout::kKob), fewFaces = fewPlanes;
  fewPlanes.groups[0].planes.clear();
  fewFaces.groups[0].faces.pop_back();
  fewFaces.groups[0].surfaceSets[0].faces.pop_back();
  for (const auto& [model, line] :
       {std::pair(fewPlanes, "planes: holds 0 planes, but 1 faces"),
        std::pair(fewFaces, "groups[0].batches[1].faces: holds 1 faces, but 0 of them")}) {
    const ModelReadResult result = Read(model);
    EXPECT_FALSE(result.Sound());
    EXPECT_EQ(result.problems.size(), 1u);
    EXPECT_THAT(Lines(result), HasSubstr(line));
  }
}

TEST(ModelDefectsTest, ReadingGoesOnBehindADefectiveRecord) {
  FileBytes file = BuildFile(Yard(ModelLayout::kKob));
  file.Put(file.offsets.at("materials[0].textureName"), 1000, 4);
  file.Put(file.offsets.at("materials[1].twoSided"), 3, 1);
  file.Put(file.offsets.at("groups[0].vertices"), 1000, 4);
  file.bytes.push_back(std::byte{'x'});
  const ModelReadResult result = ReadModelBytes(file.bytes, ModelLayout::kKob);
  const auto at = [](const std::string& place) { return Field(&ModelProblem::place, place); };
  EXPECT_THAT(result.problems,
              ElementsAre(at("materials[0].textureName"), at("materials[1].twoSided"),
                          at("groups[0].vertices"), at("endTag")));
  EXPECT_EQ(ToLine(result.problems.back()), "offset " + std::to_string(file.bytes.size() - 1) +
                                                ": endTag: bytes left over behind it: 1");
}

TEST(ModelDefectsTest, WarningsOfOneKindAreToldOnce) {
  ModelFile model = Yard(ModelLayout::kKob);
  const float infinity = std::numeric_limits<float>::infinity();
  model.groups.push_back(model.groups[0]);
  model.groups[0].vertices[1] = {0, -infinity, infinity};
  model.groups[1].vertices[0].x = infinity;
  model.materials[0].scalar3 = std::numeric_limits<float>::quiet_NaN();
  const ModelReadResult result = Read(model);
  EXPECT_TRUE(result.Sound());
  EXPECT_THAT(
      result.problems,
      ElementsAre(AllOf(Field(&ModelProblem::place, "materials[0].scalar3"),
                        Field(&ModelProblem::text, "is NaN, not a finite number")),
                  AllOf(Field(&ModelProblem::place, "groups[0].vertices[1]"),
                        Field(&ModelProblem::text, HasSubstr("is -Infinity, not a finite number; "
                                                             "there are 3 such numbers")))));
}

TEST(ModelDefectsTest, ReadingStopsAfterFiftyErrors) {
  ModelFile model = Yard(ModelLayout::kQob);
  model.groups[0].batches[0].faces.resize(100, {{}, {9, 9, 9}, {}});
  const ModelReadResult result = Read(model);
  EXPECT_EQ(result.problems.size(), 51u);
  EXPECT_EQ(result.problems.back().code, ModelProblemCode(kTooManyErrors));
}

TEST(ModelDefectsTest, OverlongListsAreSoundAndTold) {
  const auto at = [](const char* place) { return Field(&OverlongList::place, place); };
  for (const ModelLayout layout : {ModelLayout::kQob, ModelLayout::kKob}) {
    const bool isQob = layout == ModelLayout::kQob;
    const ModelReadResult exact = Read(Huge(isQob ? 65536 : 32768, layout));
    EXPECT_EQ(Lines(exact), "");
    EXPECT_THAT(OverlongLists(exact.lengths), IsEmpty());

    const FileBytes file = BuildFile(Huge(70000, layout));
    const ModelReadResult result = ReadModelBytes(file.bytes, layout);
    EXPECT_TRUE(result.Sound()) << Lines(result);
    const std::vector<OverlongList> lists = OverlongLists(result.lengths);
    EXPECT_EQ(result.problems.size(), lists.size());  // one warning for each
    EXPECT_EQ(ToLine(lists.at(0)),
              "groups[0].vertices: 70000 entries, 4464 more than the 65536 that 16-bit indices can "
              "address");
    if (isQob) {
      EXPECT_THAT(lists, ElementsAre(at("groups[0].vertices"), at("groups[0].batches[0].corners")));
      continue;
    }
    EXPECT_THAT(lists, ElementsAre(at("groups[0].vertices"), at("groups[0].batches[0].faces"),
                                   at("groups[0].batches[0].corners"),
                                   at("groups[0].collisionPoints"), at("groups[0].faces")));
    // Indices are still compared by their low 16 bits.
    for (const auto& [field, plus, value] : {std::tuple("groups[0].surfaceSets[0].faces", 4u, 1u),
                                             std::tuple("groups[0].faces[139999]", 6u, 0u)}) {
      FileBytes changed = file;
      changed.Put(file.offsets.at(field) + plus, value, 2);
      EXPECT_FALSE(ReadModelBytes(changed.bytes, layout).Sound());
    }
  }
}

}  // namespace
}  // namespace mapexport
