// Groups whose lists are too long, divided: every face once and all lists short enough, on random
// groups with tiny limits, in both layouts.

#include "exporter/base/ProcessState.h"
#include "exporter/geometry/SplitGroup.h"
#include "exporter/plugin/ExportModel.h"
#include "modelreader/ReadModelFile.h"
#include "reference/LiteralSplit.h"
#include "scene/HostScene.h"
#include "support/TestSystem.h"
#include "support/Testing.h"

namespace mapexport {
namespace {

constexpr float kInf = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

enum Shape { kSheet, kSoup, kSpot, kLine, kWild, kShapes };

class RandomGroupMaker {
 public:
  explicit RandomGroupMaker(unsigned seed)
      : random_(seed), shape_(static_cast<Shape>(seed % kShapes)) {}

  std::unique_ptr<GeometryGroup> Make() {
    auto group = std::make_unique<GeometryGroup>();
    group->name = "Level";
    const std::size_t faceCount = Below(4) == 0 ? Below(4) : Below(400);
    const std::uint32_t vertexCount = 3 + Below(300);
    const std::uint32_t width = 1 + static_cast<std::uint32_t>(std::sqrt(vertexCount));
    for (std::uint32_t v = 0; v < vertexCount; ++v) AddVertex(*group, v, width);
    // Two sets with flags, one of a static node, one without faces.
    group->surfaceSets.resize(4);
    group->surfaceSets[1].flags = Below(2) == 0 ? 0x04 : 0x11;
    group->surfaceSets[2].flags = 0x80;
    group->surfaceSets[2].name = "static_crates";
    group->surfaceSets[3].name = "static_nothing";
    for (std::uint32_t f = 0; f < faceCount; ++f) AddFace(*group, f, vertexCount, width);
    return group;
  }

 private:
  std::uint32_t Below(std::uint32_t limit) { return static_cast<std::uint32_t>(random_() % limit); }
  float Unit() { return static_cast<float>(random_()) * 0x1p-32f; }

  float Coordinate() {
    constexpr std::array kOdd{kNaN, kInf, -kInf, 3e38f, -3e38f, -0.0f};
    return shape_ == kWild && Below(6) == 0 ? kOdd[Below(kOdd.size())] : 100.0f * Unit();
  }

  void AddVertex(GeometryGroup& group, std::uint32_t v, std::uint32_t width) {
    Point3 p{Coordinate(), Coordinate(), Coordinate()};
    const std::uint32_t row = v / width;
    if (shape_ == kSheet) p = {float(v - row * width), float(row), Unit()};
    if (shape_ == kSpot) p = {5, 5, 5};
    if (shape_ == kLine) p.y = p.z = -0.0f;
    group.vertices.Append(p);
    group.boundsMax = {std::fmax(group.boundsMax.x, p.x), std::fmax(group.boundsMax.y, p.y),
                       std::fmax(group.boundsMax.z, p.z)};
    group.boundsMin = {std::fmin(group.boundsMin.x, p.x), std::fmin(group.boundsMin.y, p.y),
                       std::fmin(group.boundsMin.z, p.z)};
  }

  void AddFace(GeometryGroup& group, std::uint32_t f, std::uint32_t vertexCount,
               std::uint32_t width) {
    GroupFace& face = group.faces.At(f);
    const std::uint32_t first = Below(vertexCount);
    face.v = {first, (first + 1) % vertexCount, (first + width) % vertexCount};
    if (shape_ == kSoup) face.v = {first, Below(vertexCount), Below(vertexCount)};
    if (shape_ == kWild && Below(9) == 0) face.v[1] = first;
    const bool isCopy = f > 0 && Below(5) == 0;
    if (isCopy)
      face.v = {group.faces[f - 1].v[0], group.faces[f - 1].v[2], group.faces[f - 1].v[1]};
    face.normal = {Unit(), Unit(), Unit()};
    face.material = static_cast<std::int32_t>(Below(4)) - 1;
    face.nodeIndex = static_cast<std::int32_t>(f / 20);
    face.surfaceSet = static_cast<std::int32_t>(Below(3));
    group.surfaceSets[static_cast<std::size_t>(face.surfaceSet)].faces.Append(f);
    for (std::size_t k = 0; k < 3; ++k) {
      face.a[k] = static_cast<std::uint32_t>(group.attributes.size());
      if (!group.attributes.empty() && Below(3) > 0) face.a[k] = Below(face.a[k]);
      if (face.a[k] < group.attributes.size()) continue;
      VertexAttribute attribute;
      attribute.normal = {Unit(), -Unit(), Coordinate()};
      attribute.uvw = {Coordinate(), Unit(), Unit()};
      attribute.colour = {Unit(), Unit(), Unit(), 1.0f};
      group.attributes.Append(attribute);
    }
  }

  std::mt19937 random_;
  Shape shape_;
};

class SplitTest : public testing::Test {
 protected:
  ~SplitTest() override {
    State().currentInterface = nullptr;
    State().currentScene = nullptr;
    State().options = ExportOptions();
  }

  /// Writes the group and one of the name that its second part would have, and reads the file.
  ModelReadResult Written(const GeometryGroup& group, std::size_t longest, ModelLayout layout) {
    const Scene scene;
    HostScene host(scene, longest);
    State().currentInterface = &host;
    State().random.Seed(7);
    ExportModel model(0);
    State().currentScene = &model;
    for (std::size_t m = 0; m < 3; ++m) model.materials[m].name = std::to_string(m).c_str();
    model.materials[1].transparent = true;
    model.groups.Append(std::make_unique<GeometryGroup>(group));
    auto other = std::make_unique<GeometryGroup>();
    other->name = "Level_2";
    model.groups.Append(std::move(other));
    std::ostringstream stream;
    const bool isKob = layout == ModelLayout::kKob;
    isKob ? model.WriteKob(stream) : model.WriteQob(stream);
    const std::string bytes = stream.str();
    std::ostringstream again;
    State().random.Seed(7);
    isKob ? model.WriteKob(again) : model.WriteQob(again);
    EXPECT_TRUE(again.str() == bytes) << "the same again";
    ModelReadResult read = ReadModelBytes(std::as_bytes(std::span(bytes)), layout);
    EXPECT_TRUE(read.Sound());
    return read;
  }

  TestSystem system_;
};

std::size_t LongestListOf(const ModelFile& model) {
  std::size_t longest = 0;
  for (const ModelGroup& group : model.groups) {
    longest = std::max(
        {longest, group.vertices.size(), group.collisionPoints.size(), group.faces.size()});
    for (const ModelBatch& batch : group.batches) longest = std::max(longest, batch.corners.size());
  }
  return longest;
}

TEST_F(SplitTest, PartsHoldEveryFaceOnceInListsThatFit) {
  for (const unsigned seed : Seeds(600)) {
    SCOPED_TRACE(seed);
    const auto group = RandomGroupMaker(seed).Make();
    State().options.geometryVoxelSize = std::array{1000.0f, 30.0f, 3.0f, 0.0f}[seed / kShapes % 4];
    const std::size_t longest = std::array{3u, 5u, 17u, 60u, 200u, 0u}[seed / 3 % 6];
    for (const ModelLayout layout : {ModelLayout::kKob, ModelLayout::kQob}) {
      const ModelFile model = Written(*group, longest, layout).model;
      const bool isKob = layout == ModelLayout::kKob;
      ASSERT_TRUE(literal::FacesOf(model) == literal::FacesOf(*group, isKob));
      if (longest == 0) {
        ASSERT_EQ(model.groups.size(), 2u);
        continue;
      }
      ASSERT_LE(LongestListOf(model), longest);
      std::set<std::string> names;
      std::set<std::string> sets;
      for (const ModelGroup& part : model.groups) {
        names.insert(part.header.name);
        for (const ModelSurfaceSet& set : part.surfaceSets) sets.insert(set.name);
      }
      EXPECT_EQ(names.size(), model.groups.size());
      EXPECT_EQ(model.groups[0].header.name, "Level");
      EXPECT_EQ(model.groups.back().header.name, "Level_2");
      EXPECT_EQ(model.groups[1].header.name, model.groups.size() > 2 ? "Level_3" : "Level_2");
      const std::set<std::string> all{"NONE", "static_crates", "static_nothing"};
      EXPECT_EQ(sets, isKob ? all : std::set<std::string>());
    }
  }
}

/// A sheet of `width` by `width` quads, each two faces, in rows.
GeometryGroup Sheet(std::uint32_t width, bool reversedToo) {
  GeometryGroup group;
  group.surfaceSets.resize(1);
  for (std::uint32_t y = 0; y <= width; ++y) {
    for (std::uint32_t x = 0; x <= width; ++x) group.vertices.Append({float(x), float(y), 0.0f});
  }
  group.boundsMin = {};
  group.boundsMax = {float(width), float(width), 0.0f};
  group.attributes.Append({});
  const auto add = [&](const std::array<std::uint32_t, 3>& v) {
    group.surfaceSets[0].faces.Append(static_cast<std::uint32_t>(group.faces.size()));
    group.faces.At(group.faces.size()).v = v;
  };
  for (std::uint32_t pass = 0; pass < (reversedToo ? 2 : 1); ++pass) {
    for (std::uint32_t y = 0; y < width; ++y) {
      for (std::uint32_t x = 0; x < width; ++x) {
        const std::uint32_t v = y * (width + 1) + x;
        const std::uint32_t u = v + width + 1;
        add(pass == 0 ? std::array{v, v + 1, u} : std::array{v, u, v + 1});
        add(pass == 0 ? std::array{v + 1, u + 1, u} : std::array{v + 1, u, u + 1});
      }
    }
  }
  return group;
}

TEST_F(SplitTest, CutsAtVoxelPlanesIntoAboutAsManyPartsAsDemanded) {
  struct Case {
    float voxelSize;
    std::size_t longest;
    bool hasFaceTable, reversedToo;
    std::size_t demanded, most;
  };
  // 128 x 128 quads.
  for (const Case& c : {Case{1000, 30000, true, false, 2, 2}, Case{16, 30000, true, false, 2, 2},
                        Case{1000, 1000, true, false, 33, 37}, Case{16, 1000, true, false, 33, 37},
                        Case{16, 16000, false, false, 2, 2}, Case{16, 500, false, false, 34, 47},
                        Case{16, 3000, true, true, 22, 25}, Case{1000, 3000, true, true, 22, 25}}) {
    SCOPED_TRACE(testing::Message() << c.voxelSize << ' ' << c.longest << ' ' << c.hasFaceTable);
    const GeometryGroup group = Sheet(128, c.reversedToo);
    const GroupParts parts =
        SplitGroup(group, VoxelGrid(group, c.voxelSize), {c.longest, c.hasFaceTable});
    EXPECT_GE(parts.Count(), c.demanded);
    EXPECT_LE(parts.Count(), c.most);
    std::size_t most = 0;
    std::vector<std::size_t> partOf(group.faces.size());
    for (std::size_t part = 0; part < parts.Count(); ++part) {
      EXPECT_TRUE(std::ranges::is_sorted(parts.FacesOf(part)));
      most = std::max(most, parts.FacesOf(part).size());
      for (const std::uint32_t f : parts.FacesOf(part)) partOf[f] = part;
    }
    // Reversed copies stay with their fronts.
    for (std::size_t f = 0; c.reversedToo && 2 * f < partOf.size(); ++f) {
      ASSERT_EQ(partOf[f], partOf[f + partOf.size() / 2]);
    }
    // The first cut, in the middle, is at a voxel plane.
    if (c.longest == 30000) {
      EXPECT_EQ(most, group.faces.size() / 2);
    }
  }
}

}  // namespace
}  // namespace mapexport
