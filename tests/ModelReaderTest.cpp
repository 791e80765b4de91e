// Tests of the model-file reader: sound files, single defects, cut and changed bytes, overlong
// lists, and what is printed of a model.
#include <algorithm>
#include <bit>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <limits>
#include <map>
#include <new>
#include <random>
#include <set>
#include <sstream>

#include <gmock/gmock.h>
#include <malloc.h>
#include <nlohmann/json.hpp>
#include <sys/stat.h>

#include "modelreader/ModelJson.h"
#include "modelreader/ModelText.h"
#include "modelreader/OverlongLists.h"
#include "modelreader/PrintableText.h"
#include "modelreader/ReadModelFile.h"

namespace {

std::size_t memoryNow = 0;
std::size_t memoryPeak = 0;
std::size_t memoryLimit = std::numeric_limits<std::size_t>::max();

}  // namespace

// All memory of this program is counted, so that tests can bound what reading takes. Inlined, these
// would make g++ 12 take each new and delete for a mismatched pair.
[[gnu::noinline]] void* operator new(std::size_t size) {
  if (size > memoryLimit) throw std::bad_alloc();
  void* memory = std::malloc(size);
  if (memory == nullptr) throw std::bad_alloc();
  memoryNow += malloc_usable_size(memory);
  memoryPeak = std::max(memoryPeak, memoryNow);
  return memory;
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
  if (memory != nullptr) memoryNow -= malloc_usable_size(memory);
  std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
  operator delete(memory);
}

namespace mapexport {
namespace {

using ::testing::AllOf;
using ::testing::AnyOf;
using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using enum ModelProblemCode;

/// The bytes of a model file, and where its fields stand.
struct FileBytes {
  std::vector<std::byte> bytes;
  std::map<std::string, std::size_t> offsets;  ///< by place, as the reader spells it

  void Put(std::size_t offset, std::uint64_t value, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) bytes.at(offset + i) = std::byte(value >> (8 * i));
  }
};

/// Writes a model down as a file, field after field.
class FileBuilder {
 public:
  static FileBytes Build(const ModelFile& model) {
    FileBuilder builder;
    builder.File(model);
    return std::move(builder.file_);
  }

 private:
  void Number(std::uint64_t value, std::size_t size, const std::string& place = "") {
    Mark(place);
    for (std::size_t i = 0; i < size; ++i) file_.bytes.push_back(std::byte(value >> (8 * i)));
  }
  void U16(std::uint16_t value) { Number(value, 2); }
  void U32(std::uint64_t value, const std::string& place = "") { Number(value, 4, place); }
  void I32(std::int32_t value, const std::string& place) {
    U32(std::bit_cast<std::uint32_t>(value), place);
  }
  void F32(float value, const std::string& place = "") {
    U32(std::bit_cast<std::uint32_t>(value), place);
  }
  void Text(const std::string& text, const std::string& place) {
    U32(text.size() + 1, place);
    for (const char c : text) Number(static_cast<unsigned char>(c), 1);
    Number(0, 1);
  }
  void Point(const ModelPoint& point) {
    F32(point.x);
    F32(point.y);
    F32(point.z);
  }
  void Plane(const ModelPlane& plane) {
    Point(plane.normal);
    F32(plane.d);
  }
  void Colour(const ModelColour& colour) {
    F32(colour.r);
    F32(colour.g);
    F32(colour.b);
    F32(colour.a);
  }
  void Triple(const std::array<std::uint16_t, 3>& triple) {
    for (const std::uint16_t index : triple) U16(index);
  }
  void Mark(const std::string& place) {
    if (!place.empty()) file_.offsets[place] = file_.bytes.size();
  }

  void Sized(const std::string& place, const std::function<void()>& header,
             const std::function<void()>& body) {
    const std::size_t size = file_.bytes.size();
    U32(0, place + ".size");
    header();
    const std::size_t start = file_.bytes.size();
    body();
    file_.Put(size, file_.bytes.size() - start, 4);
  }
  void Header(const ModelHeader& header, const std::string& place) {
    U32(header.typeCode, place + ".typeCode");
    Text("Version", place + ".versionText");
    U32(header.version, place + ".version");
    Text(header.name, place + ".name");
  }
  void ChunkHeader(std::uint32_t id, const std::string& name, const std::string& place) {
    U32(id, place + ".id");
    Text(name, place + ".name");
  }

  void File(const ModelFile& model) {
    Text("BeginModel", "startTag");
    Sized(
        "materialChunk", [&] { ChunkHeader(8, "MaterialList", "materialChunk"); },
        [&] {
          U32(model.materials.size(), "materials");
          for (std::size_t i = 0; i < model.materials.size(); ++i) {
            Material(model.materials[i], "materials[" + std::to_string(i) + "]");
          }
        });
    Sized(
        "geometryChunk", [&] { ChunkHeader(7, "GeometryList", "geometryChunk"); },
        [&] {
          U32(model.groups.size(), "groups");
          for (std::size_t i = 0; i < model.groups.size(); ++i) {
            const std::string place = "groups[" + std::to_string(i) + "]";
            if (model.layout == ModelLayout::kQob) {
              QobRecord(model.groups[i], place);
            } else {
              KobRecord(model.groups[i], place);
            }
          }
        });
    Text("EndModel", "endTag");
  }

  void Material(const ModelMaterial& material, const std::string& place) {
    Sized(
        place, [&] { Header(material.header, place); },
        [&] {
          Text(material.textureName, place + ".textureName");
          F32(material.scalar3, place + ".scalar3");
          F32(material.scalar2);
          U32(std::bit_cast<std::uint32_t>(material.modeValue));
          Colour(material.ambient);
          Colour(material.diffuse);
          Colour(material.specular);
          F32(material.scalar1);
          Number(material.twoSided ? 1 : 0, 1, place + ".twoSided");
        });
  }

  void QobRecord(const ModelGroup& group, const std::string& place) {
    Sized(
        place, [&] { Header(group.header, place); },
        [&] {
          U32(group.vertices.size(), place + ".vertices");
          for (const ModelPoint& point : group.vertices) Point(point);
          U32(group.batches.size(), place + ".batches");
          for (std::size_t i = 0; i < group.batches.size(); ++i) {
            Batch(group.batches[i], place + ".batches[" + std::to_string(i) + "]");
          }
        });
  }

  void Batch(const ModelBatch& batch, const std::string& place) {
    I32(batch.material, place + ".material");
    U32(batch.faces.size(), place + ".faces");
    Mark(place + ".planes");
    for (const ModelBatchFace& face : batch.faces) Plane(face.plane);
    Mark(place + ".vertexIndices");
    for (const ModelBatchFace& face : batch.faces) Triple(face.vertices);
    Mark(place + ".cornerIndices");
    for (const ModelBatchFace& face : batch.faces) Triple(face.corners);
    U32(batch.corners.size(), place + ".corners");
    for (const ModelCorner& corner : batch.corners) Point(corner.normal);
    for (const ModelCorner& corner : batch.corners) {
      F32(corner.u);
      F32(corner.v);
    }
    for (const ModelCorner& corner : batch.corners) Colour(corner.colour);
  }

  void KobRecord(const ModelGroup& group, const std::string& place) {
    Sized(
        place + ".outer", [&] { Header(group.outerHeader, place + ".outer"); },
        [&] {
          QobRecord(group, place);
          U32(group.collisionPoints.size(), place + ".collisionPoints");
          for (const ModelPoint& point : group.collisionPoints) Point(point);
          U32(group.planes.size(), place + ".planes");
          for (const ModelPlane& plane : group.planes) Plane(plane);
          U32(group.faces.size(), place + ".faces");
          for (std::size_t i = 0; i < group.faces.size(); ++i) {
            Mark(place + ".faces[" + std::to_string(i) + "]");
            Triple(group.faces[i].vertices);
            U16(group.faces[i].position);
            U32(group.faces[i].surfaceSet);
            U32(std::bit_cast<std::uint32_t>(group.faces[i].batch));
          }
          U32(group.surfaceSets.size(), place + ".surfaceSets");
          for (std::size_t i = 0; i < group.surfaceSets.size(); ++i) {
            const ModelSurfaceSet& set = group.surfaceSets[i];
            const std::string setPlace = place + ".surfaceSets[" + std::to_string(i) + "]";
            Text(set.name, setPlace + ".name");
            U32(set.flags, setPlace + ".flags");
            U32(set.faces.size(), setPlace + ".faces");
            for (const std::uint16_t face : set.faces) U16(face);
          }
        });
  }

  FileBytes file_;
};

/// Two materials, four vertices, two batches of two triangles and one; in the layout kKob an
/// undrawn triangle too, and three surface sets.
ModelFile Yard(ModelLayout layout) {
  ModelFile model;
  model.layout = layout;
  model.materials.push_back({.header = {2, 1, "Brick"},
                             .textureName = "brick.bmp",
                             .scalar1 = 0.1f,
                             .scalar2 = -0.0f,
                             .scalar3 = 3,
                             .modeValue = -7,
                             .ambient = {0.1f, 0.1f, 0.1f, 1},
                             .diffuse = {1, 1, 1, 1},
                             .specular = {0.9f, 0.9f, 0.9f, 1},
                             .twoSided = true});
  ModelMaterial& grey = model.materials.emplace_back();
  grey.header = {2, 1, "Grey"};
  grey.textureName = "NULL";
  ModelGroup& group = model.groups.emplace_back();
  group.header = {3, 2, "Yard"};
  group.vertices = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0.5f}};
  const ModelPlane up{{0, 0, 1}, -0.0f};
  const ModelCorner corner{{0, 0, 1}, 0.25f, 0.75f, {0.5f, 0.5f, 0.5f, 1}};
  group.batches.push_back({1,
                           {{up, {0, 1, 2}, {0, 1, 2}}, {up, {0, 2, 3}, {0, 2, 3}}},
                           {corner, corner, corner, corner}});
  group.batches.push_back({-1, {{up, {2, 1, 0}, {2, 1, 0}}}, {corner, corner, corner}});
  if (layout == ModelLayout::kQob) return model;
  group.outerHeader = {35, 2, "Yard"};
  group.collisionPoints = {{5, 5, 5}, {6, 5, 5}, {6, 6, 5}};
  group.planes = {{{0, 0, 1}, -5}};
  group.faces = {
      {{0, 1, 2}, 0, 0, 0}, {{0, 1, 2}, 0, 2, -1}, {{0, 2, 3}, 1, 1, 0}, {{2, 1, 0}, 0, 0, 1}};
  group.surfaceSets = {{"NONE", 0x11, {0, 3}}, {"static_crates", 0x80, {2}}, {"NONE", 0x04, {1}}};
  return model;
}

ModelReadResult Read(const FileBytes& file, ModelLayout layout) {
  return ReadModelBytes(file.bytes, layout);
}

std::string Lines(const ModelReadResult& result) {
  std::string lines;
  for (const ModelProblem& problem : result.problems) lines += ToLine(problem) + '\n';
  return lines;
}

class BothLayouts : public ::testing::TestWithParam<ModelLayout> {};

INSTANTIATE_TEST_SUITE_P(Layouts, BothLayouts,
                         ::testing::Values(ModelLayout::kQob, ModelLayout::kKob),
                         [](const auto& layout) {
                           return layout.param == ModelLayout::kQob ? "Qob" : "Kob";
                         });

TEST_P(BothLayouts, SoundFilesAreReadWholly) {
  ModelFile empty;
  empty.layout = GetParam();
  ModelFile twoGroups = Yard(GetParam());
  twoGroups.groups.push_back(twoGroups.groups[0]);
  twoGroups.groups.insert(twoGroups.groups.begin() + 1, ModelGroup());
  twoGroups.groups[1].header = {3, 2, ""};
  twoGroups.groups[1].outerHeader = {35, 2, ""};
  for (const ModelFile& model : {empty, Yard(GetParam()), twoGroups}) {
    const FileBytes file = FileBuilder::Build(model);
    const ModelReadResult result = Read(file, GetParam());
    EXPECT_EQ(Lines(result), "");
    EXPECT_EQ(FileBuilder::Build(result.model).bytes, file.bytes);
  }
}

TEST_P(BothLayouts, EveryCutFileHasOneError) {
  const FileBytes file = FileBuilder::Build(Yard(GetParam()));
  for (std::size_t size = 0; size < file.bytes.size(); ++size) {
    const auto result = ReadModelBytes(std::span(file.bytes).first(size), GetParam());
    EXPECT_FALSE(result.Sound());
    EXPECT_EQ(result.problems.size(), 1u) << size << '\n' << Lines(result);
  }
}

/// Sums up all that the engines' reader gives of the bytes; nothing when it refuses them.
std::optional<std::size_t> EntriesForEngines(const FileBytes& file, ModelLayout layout) {
  reader::Model opened;
  if (!opened.Open(file.bytes.data(), file.bytes.size(), layout)) return std::nullopt;
  std::size_t entries = 0;
  for (const reader::Group& group : opened.groups) {
    entries += group.vertices.size();
    for (const reader::Batch& batch : group.batches) {
      for (const reader::Triple& corners : batch.cornerIndices) {
        for (const std::uint16_t corner : corners) entries += batch.normals[corner].z <= 2;
      }
    }
    for (const reader::SurfaceSet& set : group.surfaceSets) {
      for (const std::uint16_t face : set.faces) entries += group.faces[face].batch >= -1;
    }
  }
  return entries;
}

std::size_t EntriesOf(const ModelFile& model) {
  std::size_t entries = 0;
  for (const ModelGroup& group : model.groups) {
    entries += group.vertices.size();
    for (const ModelBatch& batch : group.batches) {
      for (const ModelBatchFace& face : batch.faces) {
        for (const std::uint16_t corner : face.corners) {
          entries += batch.corners.at(corner).normal.z <= 2;
        }
      }
    }
    for (const ModelSurfaceSet& set : group.surfaceSets) entries += set.faces.size();
  }
  return entries;
}

/// Reads the bytes within a small multiple of their memory. Of a sound file nothing may be lost.
void CheckReading(const FileBytes& file, ModelLayout layout) {
  const std::size_t before = memoryNow;
  memoryPeak = before;
  const ModelReadResult result = Read(file, layout);
  const std::size_t used = memoryPeak - before;
  constexpr std::size_t kForProblems = 32 * 1024;
  EXPECT_LE(used, 16 * file.bytes.size() + kForProblems);
  const std::optional<std::size_t> entries = EntriesForEngines(file, layout);
  if (result.Sound()) {
    EXPECT_EQ(FileBuilder::Build(result.model).bytes, file.bytes);
    EXPECT_EQ(entries, EntriesOf(result.model));
  }
}

TEST_P(BothLayouts, ChangedBytesAreReadSafely) {
  const FileBytes file = FileBuilder::Build(Yard(GetParam()));
  for (std::size_t i = 0; i + 4 <= file.bytes.size(); ++i) {
    for (const std::uint64_t value : {0ull, 1ull, 0x7FFFFFFFull, 0xFFFFFFFFull}) {
      FileBytes changed = file;
      changed.Put(i, value, 4);
      CheckReading(changed, GetParam());
    }
  }
  std::mt19937 random(20);
  for (int round = 0; round < 5000; ++round) {
    FileBytes changed = file;
    for (std::uint32_t k = random() % 4 + 1; k > 0; --k) {
      changed.Put(random() % file.bytes.size(), random() % 4 == 0 ? random() : random() % 8, 1);
    }
    CheckReading(changed, GetParam());
  }
}

TEST_P(BothLayouts, ManySmallRecordsTakeLittleMemory) {
  ModelFile model = Yard(GetParam());
  const ModelBatch batch = model.groups[0].batches[1];
  // One more than what doubling lists would have room for.
  model.materials.resize(4097, model.materials[1]);
  ModelGroup& group = model.groups[0];
  group.batches.clear();
  group.batches.resize(4097, batch);
  const FileBytes file = FileBuilder::Build(model);
  const std::size_t before = memoryNow;
  memoryPeak = before;
  Read(file, GetParam());
  // With the file's own bytes `inspect` stays below four times its size.
  EXPECT_LE(memoryPeak - before, 3 * file.bytes.size());
}

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
  FileBytes file = FileBuilder::Build(Yard(ModelLayout::kKob));
  file.Put(file.offsets.at(defect.at) + defect.plus, defect.value, defect.size);
  const ModelReadResult result = Read(file, ModelLayout::kKob);
  EXPECT_FALSE(result.Sound());
  ASSERT_FALSE(result.problems.empty());
  const ModelProblem& first = result.problems.front();
  EXPECT_EQ(first.code, defect.code) << Lines(result);
  EXPECT_EQ(first.place, defect.place) << Lines(result);
  EXPECT_THAT(first.text, HasSubstr(defect.text));
  ASSERT_TRUE(first.offset.has_value());
  EXPECT_LE(*first.offset, file.bytes.size());
}

INSTANTIATE_TEST_SUITE_P(Defects, SingleDefect, ::testing::ValuesIn(kDefects));

TEST(ModelReaderTest, DisagreeingListsAreErrors) {
  struct Case {
    std::function<void(ModelGroup&)> change;
    std::string line;
  };
  const Case cases[] = {
      {[](ModelGroup& group) { group.planes.clear(); }, "planes: holds 0 planes, but 1 faces"},
      {[](ModelGroup& group) { group.faces.pop_back(), group.surfaceSets[0].faces.pop_back(); },
       "groups[0].batches[1].faces: holds 1 faces, but 0 of them"},
      {[](ModelGroup& group) { group.surfaceSets[0].faces.pop_back(); },
       "groups[0].faces[3].surfaceSet: is 0, but that surface set does not list the face"},
  };
  for (const Case& one : cases) {
    ModelFile model = Yard(ModelLayout::kKob);
    one.change(model.groups[0]);
    const ModelReadResult result = Read(FileBuilder::Build(model), model.layout);
    EXPECT_FALSE(result.Sound());
    EXPECT_THAT(result.problems, ElementsAre(Field(&ModelProblem::text, Not(IsEmpty()))));
    EXPECT_THAT(Lines(result), HasSubstr(one.line));
  }
}

TEST(ModelReaderTest, ReadingGoesOnBehindADefectiveRecord) {
  FileBytes file = FileBuilder::Build(Yard(ModelLayout::kKob));
  file.Put(file.offsets.at("materials[0].textureName"), 1000, 4);
  file.Put(file.offsets.at("materials[1].twoSided"), 3, 1);
  file.Put(file.offsets.at("groups[0].vertices"), 1000, 4);
  file.bytes.push_back(std::byte{'x'});
  const ModelReadResult result = Read(file, ModelLayout::kKob);
  const auto at = [](const std::string& place) { return Field(&ModelProblem::place, place); };
  EXPECT_THAT(result.problems,
              ElementsAre(at("materials[0].textureName"), at("materials[1].twoSided"),
                          at("groups[0].vertices"), at("endTag")));
  EXPECT_EQ(ToLine(result.problems.back()), "offset " + std::to_string(file.bytes.size() - 1) +
                                                ": endTag: bytes left over behind it: 1");
}

TEST(ModelReaderTest, WarningsOfOneKindAreToldOnce) {
  ModelFile model = Yard(ModelLayout::kKob);
  const float infinity = std::numeric_limits<float>::infinity();
  model.groups.push_back(model.groups[0]);
  model.groups[0].vertices[1] = {0, -infinity, infinity};
  model.groups[1].vertices[0].x = infinity;
  model.materials[0].scalar3 = std::numeric_limits<float>::quiet_NaN();
  const ModelReadResult result = Read(FileBuilder::Build(model), model.layout);
  EXPECT_TRUE(result.Sound());
  EXPECT_THAT(
      result.problems,
      ElementsAre(AllOf(Field(&ModelProblem::place, "materials[0].scalar3"),
                        Field(&ModelProblem::text, "is NaN, no finite number")),
                  AllOf(Field(&ModelProblem::place, "groups[0].vertices[1]"),
                        Field(&ModelProblem::text, HasSubstr("is -Infinity, no finite number; "
                                                             "there are 3 such numbers")))));
}

TEST(ModelReaderTest, ReadingStopsAfterFiftyErrors) {
  ModelFile model = Yard(ModelLayout::kQob);
  model.groups[0].batches[0].faces.resize(100, {{}, {9, 9, 9}, {}});
  const ModelReadResult result = Read(FileBuilder::Build(model), model.layout);
  EXPECT_EQ(result.problems.size(), 51u);
  EXPECT_EQ(result.problems.back().code, kTooManyErrors);
}

/// `count` drawn triangles in one batch, each with its own vertices and corners cut to 16 bits, and
/// as many undrawn ones.
ModelFile Huge(std::size_t count, ModelLayout layout) {
  ModelFile model = Yard(layout);
  ModelGroup& group = model.groups[0];
  group.vertices.resize(count);
  group.batches = {{0, {}, std::vector<ModelCorner>(count)}};
  for (std::size_t i = 0; i < count; ++i) {
    const auto low = static_cast<std::uint16_t>(i);
    group.batches[0].faces.push_back({{}, {low, low, 0}, {0, low, low}});
  }
  if (layout == ModelLayout::kQob) return model;
  group.collisionPoints.resize(count);
  group.planes.resize(count);
  group.faces.clear();
  group.surfaceSets = {{"NONE", 0, {}}, {"NONE", 4, {}}};
  for (std::size_t i = 0; i < 2 * count; ++i) {
    const auto low = static_cast<std::uint16_t>(i / 2);
    const bool drawn = i % 2 == 0;
    const std::uint32_t set = drawn ? 0 : 1;
    group.faces.push_back({{low, low, 0}, low, set, drawn ? 0 : -1});
    group.surfaceSets[set].faces.push_back(static_cast<std::uint16_t>(i));
  }
  return model;
}

TEST(ModelReaderTest, OverlongListsAreSoundAndTold) {
  const auto placesOf = [](const std::vector<OverlongList>& lists) {
    std::vector<std::string> places;
    places.reserve(lists.size());
    for (const OverlongList& list : lists) places.push_back(list.place);
    return places;
  };
  for (const ModelLayout layout : {ModelLayout::kQob, ModelLayout::kKob}) {
    const ModelReadResult exact =
        Read(FileBuilder::Build(Huge(layout == ModelLayout::kQob ? 65536 : 32768, layout)), layout);
    EXPECT_EQ(Lines(exact), "");
    EXPECT_THAT(OverlongLists(exact.lengths), IsEmpty());

    FileBytes file = FileBuilder::Build(Huge(70000, layout));
    const ModelReadResult result = Read(file, layout);
    EXPECT_TRUE(result.Sound()) << Lines(result);
    const std::vector<OverlongList> lists = OverlongLists(result.lengths);
    EXPECT_EQ(ToLine(lists.at(0)),
              "groups[0].vertices: 70000 entries, 4464 more than the 65536 that 16-bit indices can "
              "address");
    if (layout == ModelLayout::kQob) {
      EXPECT_THAT(placesOf(lists),
                  ElementsAre("groups[0].vertices", "groups[0].batches[0].corners"));
    } else {
      EXPECT_THAT(placesOf(lists), ElementsAre("groups[0].vertices", "groups[0].batches[0].faces",
                                               "groups[0].batches[0].corners",
                                               "groups[0].collisionPoints", "groups[0].faces"));
      // Indices are still compared by their low 16 bits.
      FileBytes changed = file;
      changed.Put(file.offsets.at("groups[0].surfaceSets[0].faces") + 4, 1, 2);
      EXPECT_FALSE(Read(changed, layout).Sound());
      file.Put(file.offsets.at("groups[0].faces[139999]") + 6, 0, 2);
      EXPECT_FALSE(Read(file, layout).Sound());
    }
    EXPECT_EQ(result.problems.size(), lists.size());  // one warning for each
  }
}

TEST(ModelReaderTest, FilesThatCannotBeHadAreErrors) {
  const std::filesystem::path folder = std::filesystem::path(::testing::TempDir()) /
                                       ("reader-" + std::to_string(std::random_device()()));
  std::filesystem::create_directory(folder);
  std::ofstream(folder / "empty").close();
  std::ofstream(folder / "huge").close();
  std::filesystem::resize_file(folder / "huge", std::uint64_t{1} << 32);
  ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
  const std::pair<const char*, const char*> cases[] = {
      {"missing", "can't be opened: No such file or directory"},
      {"", "is a folder, not a model file"},
      {"empty", "is empty"},
      {"pipe", "is no regular file"},
      {"huge",
       "has 4294967296 bytes: sizes of 32 bits can't describe a file of 4294967296 bytes or more"},
  };
  for (const auto& [name, line] : cases) {
    const ModelReadResult result = ReadModelFile((folder / name).string(), ModelLayout::kKob);
    EXPECT_FALSE(result.Sound());
    EXPECT_EQ(Lines(result), std::string(line) + '\n');
  }

  const FileBytes file = FileBuilder::Build(Huge(5000, ModelLayout::kQob));
  std::ofstream(folder / "yard.qob", std::ios::binary)
      .write(reinterpret_cast<const char*>(file.bytes.data()),
             static_cast<std::streamsize>(file.bytes.size()));
  EXPECT_EQ(Lines(ReadModelFile((folder / "yard.qob").string(), ModelLayout::kQob)), "");
  memoryLimit = 64 * 1024;
  const ModelReadResult tooLarge = ReadModelFile((folder / "yard.qob").string(), ModelLayout::kQob);
  memoryLimit = std::numeric_limits<std::size_t>::max();
  EXPECT_EQ(Lines(tooLarge), "there is not enough memory to read it\n");
  EXPECT_THAT(tooLarge.model.groups, IsEmpty());
  std::filesystem::remove_all(folder);
}

nlohmann::json JsonOf(const ModelFile& model, bool summary) {
  std::ostringstream out;
  WriteModelJson(model, summary, out);
  return nlohmann::json::parse(out.str());
}

TEST(ModelReaderTest, TheSummaryGivesCountsForLists) {
  const nlohmann::json summary = JsonOf(Yard(ModelLayout::kKob), true);
  const nlohmann::json whole = JsonOf(Yard(ModelLayout::kKob), false);
  EXPECT_EQ(summary.at("materials"), whole.at("materials"));
  EXPECT_EQ(summary.at("groups").at(0),
            (nlohmann::json{{"name", "Yard"},
                            {"typeCode", 3},
                            {"version", 2},
                            {"vertexCount", 4},
                            {"batches",
                             {{{"material", 1}, {"faceCount", 2}, {"cornerCount", 4}},
                              {{"material", -1}, {"faceCount", 1}, {"cornerCount", 3}}}},
                            {"outer", {{"name", "Yard"}, {"typeCode", 35}, {"version", 2}}},
                            {"collisionPointCount", 3},
                            {"planeCount", 1},
                            {"faceCount", 4},
                            {"surfaceSets",
                             {{{"name", "NONE"}, {"flags", 17}, {"faceCount", 2}},
                              {{"name", "static_crates"}, {"flags", 128}, {"faceCount", 1}},
                              {{"name", "NONE"}, {"flags", 4}, {"faceCount", 1}}}}}));
  EXPECT_FALSE(JsonOf(Yard(ModelLayout::kQob), false).at("groups").at(0).contains("faces"));
}

TEST(ModelReaderTest, InvisibleCharactersAreShown) {
  for (const auto& [text, shown] : std::vector<std::pair<std::string, std::string>>{
           {"\u00ad\u034f\u115f\u17b4\u180e\u200b\u200d",
            "\\u00AD\\u034F\\u115F\\u17B4\\u180E"
            "\\u200B\\u200D"},
           {"\u2028\u202e\u2060\u2066\u206f", "\\u2028\\u202E\\u2060\\u2066\\u206F"},
           {"\u3164\ufe0f\ufeff\uffa0\ufff9", "\\u3164\\uFE0F\\uFEFF\\uFFA0\\uFFF9"},
           {"\U00013430\U000e0001\U000e0041", "\\U00013430\\U000E0001\\U000E0041"},
           {"\u00ac\u00ae\u200a\u2010\u2070\U0001f600\U000e1000",
            "\u00ac\u00ae\u200a\u2010\u2070\U0001f600\U000e1000"}}) {
    EXPECT_EQ(PrintableText(text), shown);
    ModelFile model = Yard(ModelLayout::kKob);
    model.materials[0].header.name = text;
    std::ostringstream out;
    WriteModelJson(model, true, out);
    EXPECT_EQ(nlohmann::json::parse(out.str()).at("materials").at(0).at("name"), text);
    EXPECT_EQ(out.str().find(text) == std::string::npos, text != shown);
  }
}

TEST(ModelReaderTest, OutputStaysValidForAnyNameAndNumber) {
  ModelFile model = Yard(ModelLayout::kKob);
  model.materials[0].header.name = "a\"\\\x1B\x7F\xC2\x9B \xFF\xC3 \xED\xA0\x80 \xC3\xA9\xD8\x9C";
  model.materials[0].scalar1 = -std::numeric_limits<float>::infinity();
  model.materials[0].scalar2 = std::numeric_limits<float>::denorm_min();
  model.groups[0].surfaceSets[0] = {"NONE", 0x105, {}};

  const nlohmann::json material = JsonOf(model, true).at("materials").at(0);
  const std::string lost = "\uFFFD";
  EXPECT_EQ(material.at("name"), "a\"\\\x1B\x7F\xC2\x9B " + lost + lost + ' ' + lost + lost + lost +
                                     " \xC3\xA9\xD8\x9C");
  EXPECT_EQ(material.at("scalar1"), "-Infinity");
  EXPECT_EQ(material.at("scalar2").get<float>(), std::numeric_limits<float>::denorm_min());

  model.materials.push_back(model.materials[0]);
  model.groups[0].batches.resize(30);
  std::ostringstream out;
  WriteModelText(model, out);
  EXPECT_THAT(out.str(), HasSubstr("a\"\\\\u001B\\u007F\\u009B \\xFF..."));
  EXPECT_THAT(out.str(), HasSubstr("climbable notrendered 0x100\n"));
  EXPECT_THAT(out.str(), HasSubstr("static_crates      1  (static node)\n"));
  EXPECT_THAT(out.str(), HasSubstr("   <0.1 %\n"));
  EXPECT_THAT(out.str(), HasSubstr(" Grey "));
  EXPECT_THAT(out.str(), Not(AnyOf(HasSubstr("NULL"), HasSubstr("NONE"), HasSubstr(" 0.0 %"))));
  EXPECT_THAT(out.str(), HasSubstr("... and 20 more\n"));
  EXPECT_THAT(out.str(), HasSubstr("not drawn at all  2 materials: 0 a"));
  EXPECT_THAT(out.str(), HasSubstr("fullest list      groups[0].vertices, <0.1 % of 65536\n"));
  EXPECT_THAT(out.str(), HasSubstr("    notrendered       2      1\n"));
  EXPECT_THAT(out.str(), HasSubstr("(0, 0, 0) to (1, 1, 0.5)\n"));
}

}  // namespace
}  // namespace mapexport
