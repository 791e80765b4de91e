// The fast forms of the geometry operations against their literal definitions.

#include "exporter/base/ProcessState.h"
#include "exporter/geometry/ConvertCoordinates.h"
#include "exporter/geometry/RenderBatches.h"
#include "exporter/geometry/SmoothedNormals.h"
#include "exporter/geometry/VoxelPartition.h"
#include "exporter/modelwriter/IndexLimit.h"
#include "exporter/plugin/CurrentExport.h"
#include "exporter/plugin/ExportModel.h"
#include "reference/LiteralGeometry.h"
#include "support/TestSystem.h"
#include "support/Testing.h"

namespace mapexport {
namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

/// Values that crowd the tolerance: multiples of it, a float step more or less.
class CrowdedValues {
 public:
  CrowdedValues(unsigned seed, int steps, float origin)
      : random_(seed), steps_(steps), origin_(origin) {}

  float Next() {
    const int oddity = Pick(400);
    if (oddity == 0) return kNaN;
    if (oddity == 1) return kInfinity;
    const float value = origin_ + kAttributeTolerance * static_cast<float>(Pick(steps_));
    return std::nextafter(value, Pick(3) == 0 ? -1e9f : 1e9f);
  }
  Point3 NextPoint() { return {Next(), Next(), Next()}; }
  int Pick(int count) { return std::uniform_int_distribution(0, count - 1)(random_); }

 private:
  std::mt19937 random_;
  int steps_;
  float origin_;
};

/// Every byte of an attribute; it is made of 32-bit fields only.
std::array<std::uint32_t, sizeof(VertexAttribute) / 4> BitsOf(const VertexAttribute& attribute) {
  return std::bit_cast<std::array<std::uint32_t, sizeof(VertexAttribute) / 4>>(attribute);
}

struct AttributeCase {
  const char* name;
  float origin;       ///< where the positions lie
  int positionSteps;  ///< how many multiples of the tolerance they spread over
  int otherSteps;     ///< the same for normals and texture coordinates
  int materials;
};

TEST(AddAttribute, EqualsTheScanFromTheFirstAttribute) {
  const AttributeCase cases[] = {
      {"few of everything", 0.0f, 3, 2, 2},
      {"one corner with many attributes", 5.0f, 1, 12, 1},
      {"crowded cell", -3.0f, 6, 6, 1},
      {"crowded cells on both sides of a border", 0.62f, 3, 3, 1},
      {"spread over many cells", 0.0f, 400, 2, 1},
      {"neighbouring floats about as far apart as the tolerance", 131072.0f, 40, 2, 2},
      {"across the border to far values", 524288.0f, 300, 2, 1},
      {"far values", 1e30f, 3, 2, 1},
  };
  for (const AttributeCase& c : cases) {
    SCOPED_TRACE(c.name);
    CrowdedValues positions(FirstSeed() + 1, c.positionSteps, c.origin);
    CrowdedValues others(FirstSeed() + 2, c.otherSteps, 0.0f);
    GeometryGroup group;
    std::vector<VertexAttribute> literal;
    std::array<Point3, 10> vertices;
    std::vector<AttributePlace> places;
    for (std::size_t i = 0; i < 3000; ++i) {
      // One after the other, then the vertices of a mesh with several corners each.
      const bool inMesh = i / 60 % 2 == 1;
      if (i % 60 == 0) {
        for (Point3& vertex : vertices) vertex = positions.NextPoint();
        places = group.attributeIndex.PlacesOf(vertices);
      }
      const std::size_t v = i * 7 % vertices.size();
      VertexAttribute x;
      x.position = inMesh ? vertices[v] : positions.NextPoint();
      x.normal = others.NextPoint();
      x.uvw = others.NextPoint();
      x.colour.r = static_cast<float>(i);
      x.material = others.Pick(c.materials);
      const int found = inMesh ? AddAttribute(group, x, places[v]) : AddAttribute(group, x);
      ASSERT_EQ(found, literal::AddAttribute(literal, x)) << i;
    }
    ASSERT_EQ(group.attributes.size(), literal.size());
    for (std::size_t i = 0; i < literal.size(); ++i) {
      ASSERT_EQ(BitsOf(group.attributes[i]), BitsOf(literal[i])) << i;
    }
  }
}

TEST(AddAttribute, SeesAttributesThatWereTakenAway) {
  GeometryGroup group;
  for (const float x : {0.0f, 1.0f, 2.0f}) {
    VertexAttribute attribute;
    attribute.position.x = x;
    AddAttribute(group, attribute);
  }
  const VertexAttribute last = group.attributes[2];
  GeometryGroup released = group;
  group.attributes.Shrink(1);
  EXPECT_EQ(AddAttribute(group, last), 1);

  released.attributeIndex.Release();
  EXPECT_TRUE(released.attributeIndex.AllDistinct(3));
  released.attributes.Shrink(1);
  released.attributeIndex.Update(released.attributes);
  EXPECT_FALSE(released.attributeIndex.AllDistinct(3));
}

TEST(SmoothedNormals, EqualTheScanOfAllFaces) {
  std::mt19937 random(FirstSeed() + 3);
  const auto pick = [&](std::uint32_t count) {
    return static_cast<std::uint32_t>(random() % count);
  };
  for (const std::uint32_t vertices : {3u, 8u, 40u}) {
    constexpr std::uint32_t kFirst = 100;
    std::vector<GroupFace> faces(150);
    for (GroupFace& face : faces) {
      for (std::uint32_t& v : face.v) v = kFirst + pick(vertices);
      face.smoothing = pick(16) * pick(2);
      // Sums that come out as 0 with either sign are among them.
      const auto component = [&] { return (static_cast<float>(pick(5)) - 2.0f) * -0.25f; };
      face.normal = {component(), component(), component()};
    }
    const SmoothedNormals normals(faces, kFirst, vertices);
    for (std::size_t f = 0; f < faces.size(); ++f) {
      for (std::size_t k = 0; k < 3; ++k) {
        using Bits = std::array<std::uint32_t, 3>;
        ASSERT_EQ(std::bit_cast<Bits>(normals.OfFace(f)[k]),
                  std::bit_cast<Bits>(literal::CornerNormal(faces, f, k)))
            << f;
      }
    }
  }
}

/// A running export with a group of random faces over few vertices and attributes.
class BatchesTest : public testing::Test {
 protected:
  BatchesTest() : model_(0) {
    State().currentScene = &model_;
    for (std::size_t m = 0; m < 4; ++m) model_.materials[m].transparent = m % 2 == 1;
  }
  ~BatchesTest() override { State().currentScene = nullptr; }

  GeometryGroup RandomGroup(unsigned seed, std::uint32_t vertices, std::uint32_t attributes) {
    std::mt19937 random(seed);
    GeometryGroup group;
    group.surfaceSets.resize(1);
    group.boundsMin = {-10, -5, -20};
    group.boundsMax = {10, 30, 25};
    for (std::uint32_t v = 0; v < vertices; ++v) {
      const auto coordinate = [&](float lo, float hi) {
        return lo + static_cast<float>(random() % 1024) / 1023.0f * (hi - lo);
      };
      group.vertices.Append({coordinate(-10, 10), coordinate(-5, 30), coordinate(-20, 25)});
    }
    group.attributes.At(attributes - 1);
    for (std::uint32_t f = 0; f < 400; ++f) {
      GroupFace& face = group.faces.At(f);
      for (std::size_t k = 0; k < 3; ++k) {
        face.v[k] = static_cast<std::uint32_t>(random() % vertices);
        face.a[k] = static_cast<std::uint32_t>(random() % attributes);
      }
      face.material = static_cast<std::int32_t>(random() % 5) - 1;
      face.nodeIndex = static_cast<std::int32_t>(random() % 3);
      group.surfaceSets[0].faces.Append(f);
    }
    return group;
  }

  TestSystem system_;
  ExportModel model_;
};

TEST_F(BatchesTest, CellsAndBatchesEqualTheDenseGridsAndTheLists) {
  unsigned seed = FirstSeed();
  for (const float voxelSize : {1000.0f, 9.0f, 3.0f, 2.0f, 0.0f, -2.0f, kNaN, kInfinity}) {
    for (const auto& [vertices, attributes] :
         {std::pair{60u, 1u}, {60u, 3u}, {60u, 50u}, {3u, 2u}, {2u, 200u}}) {
      SCOPED_TRACE(voxelSize);
      GeometryGroup group = RandomGroup(++seed, vertices, attributes);
      for (std::uint32_t f = 0; f < group.faces.size(); f += 17) group.faces[f].drawn = 0;
      group.collisionPoints.assign(group.vertices.begin(), group.vertices.end());
      RandomGenerator fast(seed);
      RandomGenerator plain(seed);
      const literal::DenseVoxels voxels(group, voxelSize, plain);
      const auto expected = literal::Batches(group, model_.materials, voxels.cells);

      BuildRenderBatches(group, BuildVoxelPartition(group, VoxelGrid(group, voxelSize), fast),
                         model_.materials);
      EXPECT_EQ(fast.Draw(), plain.Draw()) << "another number of draws";
      ASSERT_EQ(group.batches.size(), expected.size());
      std::size_t ordinal = 0;
      for (const literal::Batch& batch : expected) {
        ASSERT_TRUE(batch == group.batches[ordinal]) << "batch " << ordinal;
        ++ordinal;
      }
    }
  }
}

TEST_F(BatchesTest, HugeGridsNeedNoMemory) {
  GeometryGroup group = RandomGroup(1, 60, 3);
  const VoxelGrid grid(group, 1e-30f);
  EXPECT_EQ(grid.counts,
            (std::array<std::int32_t, 3>{kMaxVoxelsPerAxis, kMaxVoxelsPerAxis, kMaxVoxelsPerAxis}));
  RandomGenerator random(0);
  EXPECT_LE(BuildVoxelPartition(group, grid, random).CellCount(), group.faces.size());
}

TEST_F(BatchesTest, AnEmptyGroupIsOneCell) {
  const VoxelGrid grid(GeometryGroup(), 1000.0f);
  EXPECT_EQ(grid.counts, (std::array<std::int32_t, 3>{1, 1, 1}));
  EXPECT_EQ(grid.CellOf({kNaN, kInfinity, 3.0f}), (VoxelCell{0, 0, 0}));
}

TEST_F(BatchesTest, TheCurrentExportHandsOverWhatTheProcessHolds) {
  State().options.coordinateSystem = 3;
  State().options.textureCoordinateMode = 1;
  Point3 p{1, 2, 3};
  ConvertPoint(p);
  ConvertTextureCoordinates(p);
  EXPECT_EQ(p, (Point3{1, 2, 3})) << "x is turned twice";
  model_.materials[0].twoSided = true;
  GeometryGroup group = RandomGroup(1, 60, 3);
  const auto inMaterial0 = std::ranges::count(group.faces, 0, &GroupFace::material);
  DuplicateTwoSidedFaces(group);
  EXPECT_EQ(group.faces.size(), 400u + static_cast<std::size_t>(inMaterial0));
  State().options.geometryVoxelSize = 15.0f;
  std::ostringstream stream;
  BinaryWriter out(stream);
  WriteKobRecord(group, out);
  EXPECT_EQ(State().voxelCellSize, VoxelGrid(group, 15.0f).cellSize) << "for the next export";
  State().options = ExportOptions();
}

TEST_F(BatchesTest, OverlongListsAreToldToTheLogAndOnlyThose) {
  GeometryGroup group;
  group.name = "Level";
  LogOverlongList(group, "faces", 65536);
  EXPECT_EQ(system_.debugOutput, "");
  LogOverlongList(group, "corners of batch", 3, 65537);
  EXPECT_EQ(system_.debugOutput,
            "Group Level: corners of batch 3: 65537 entries, 16-bit indices address 65536\n");
}

}  // namespace
}  // namespace mapexport
