// The clean-up passes: bit for bit what their definitions do, on random groups that crowd the
// limits.

#include "exporter/base/ProcessState.h"
#include "exporter/geometry/CleanVertexAttributes.h"
#include "exporter/geometry/GeometryGroup.h"
#include "exporter/geometry/IsSliver.h"
#include "exporter/geometry/RemoveDegenerateFaces.h"
#include "exporter/geometry/RemoveFaces.h"
#include "exporter/geometry/WeldVertices.h"
#include "exporter/plugin/CurrentExport.h"
#include "reference/LiteralCleanVertexAttributes.h"
#include "reference/LiteralWeldVertices.h"
#include "support/GroupBits.h"
#include "support/TestSystem.h"
#include "support/Testing.h"

namespace mapexport {
namespace {

constexpr float kInf = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kMax = std::numeric_limits<float>::max();

class Random {
 public:
  explicit Random(unsigned seed) : engine_(seed) {}

  std::uint32_t Below(std::size_t limit) {
    return static_cast<std::uint32_t>(engine_() % static_cast<std::uint32_t>(limit));
  }
  bool OneIn(std::uint32_t n) { return Below(n) == 0; }
  float Unit() { return static_cast<float>(engine_()) * 0x1p-32f; }
  template <typename T, std::size_t kSize>
  T Pick(const std::array<T, kSize>& of) {
    return of[Below(kSize)];
  }
  /// `x` or one of the two floats on either side of it.
  float Near(float x) {
    const std::uint32_t steps = Below(5);
    for (std::uint32_t i = 2; i < steps; ++i) x = std::nextafter(x, kInf);
    for (std::uint32_t i = steps; i < 2; ++i) x = std::nextafter(x, -kInf);
    return x;
  }

 private:
  std::mt19937 engine_;
};

std::size_t SomeSize(Random& random) {
  return random.OneIn(4) ? random.Below(4) : random.Below(250);
}

/// Fills the faces, and the lists of three sets; `tidy` as gathering does it.
void AddFaces(GeometryGroup& group, Random& random, std::size_t count, bool tidy) {
  group.surfaceSets.resize(3);
  for (std::uint32_t f = 0; f < count; ++f) {
    GroupFace& face = group.faces.At(f);
    for (std::uint32_t& v : face.v) v = random.Below(group.vertices.size());
    face.surfaceSet = static_cast<std::int32_t>(random.Below(3));
    face.nodeIndex = static_cast<std::int32_t>(f);
    group.surfaceSets[static_cast<std::size_t>(face.surfaceSet)].faces.Append(f);
  }
  if (tidy) return;
  for (SurfaceSet& set : group.surfaceSets) {
    // Missing, foreign and repeated entries, entries that are no faces, and no order.
    for (std::uint32_t& f : set.faces) {
      if (random.OneIn(3)) f = random.Below(count + 3);
    }
    for (std::uint32_t i = 1; i < set.faces.size(); ++i) {
      if (random.OneIn(2)) std::swap(set.faces[i], set.faces[random.Below(i)]);
    }
  }
}

enum Layout { kGrid, kCluster, kChain, kEqual, kFarOut, kMagnitudes, kBorders, kLayouts };

float SomeCoordinate(Random& random, Layout layout, float distance, std::size_t i) {
  if (random.OneIn(60)) return random.Pick(std::array{kNaN, kInf, -kInf, -0.0f, kMax, 1e30f});
  const float unit = std::isfinite(distance) && distance != 0.0f ? std::fabs(distance) : 1.0f;
  const float farOut = std::ldexp(1.0f, std::min(std::ilogb(unit), 60) + 25);
  switch (layout) {
    case kGrid:
      return random.Near(unit * static_cast<float>(random.Below(5)));
    case kCluster:
      return unit * 3.0f * random.Unit();
    case kChain:
      return random.Near(unit * static_cast<float>(i));
    case kFarOut:
      return random.Near(random.OneIn(2) ? farOut : -farOut);
    case kMagnitudes:
      return random.Near(
          std::ldexp(random.OneIn(2) ? 1.0f : -1.0f, 8 * int(random.Below(34)) - 145));
    case kBorders:  // of the grid's cells, and the distance away from them
      return random.Near(unit * (random.Pick(std::array{-5.92f, -0.74f, 1.26f, 10.08f}) +
                                 static_cast<float>(random.Below(3)) - 1.0f));
    default:
      return unit;
  }
}

GeometryGroup GroupToWeld(Random& random, float distance) {
  GeometryGroup group;
  const auto layout = static_cast<Layout>(random.Below(kLayouts));
  const std::size_t count = SomeSize(random);
  for (std::size_t i = 0; i < count; ++i) {
    const float x = SomeCoordinate(random, layout, distance, i);
    const bool flat = layout == kChain;
    group.vertices.Append({x, flat ? 0.0f : SomeCoordinate(random, layout, distance, i),
                           flat ? -0.0f : SomeCoordinate(random, layout, distance, i)});
  }
  if (count > 0) AddFaces(group, random, SomeSize(random), !random.OneIn(3));
  return group;
}

TEST(WeldVertices, EqualsTheComparisonOfAllPairs) {
  constexpr std::array kDistances{0.2f,   -0.2f,  0.0f,   1.0f,   1000.0f, 1e-19f,
                                  1e-22f, 3e-23f, 2e-23f, 1e-30f, 1e18f,   1.8446744e19f,
                                  2e19f,  1e30f,  kMax,   kInf,   -kInf,   kNaN};
  for (const unsigned seed : Seeds(1500)) {
    Random random(seed);
    const float distance = random.Pick(kDistances);
    GeometryGroup fast = GroupToWeld(random, distance);
    GeometryGroup literal = fast;
    const bool degenerate = WeldVertices(fast, distance);
    LiteralWeldVertices(literal, distance);
    ASSERT_EQ(BitsOf(fast), BitsOf(literal)) << "seed " << seed << ", distance " << distance;
    if (degenerate) RemoveDegenerateFaces(fast);
    LiteralRemoveDegenerateFaces(literal);
    ASSERT_EQ(BitsOf(fast), BitsOf(literal)) << "degenerates, seed " << seed;
  }
}

TEST(IsSliver, MeasuresTheThirdCornerFromTheLineThroughTheOthers) {
  const Point3 a{0, 0, 0};
  const Point3 b{10, 0, 0};
  EXPECT_TRUE(IsSliver(a, b, {500, 0.3f, 0}));
  EXPECT_FALSE(IsSliver(a, b, {500, 0.32f, 0}));
  EXPECT_TRUE(IsSliver(a, b, {0, 0.3f, 0}));
  EXPECT_FALSE(IsSliver(a, {0, 0.3f, 0}, b)) << "the order of the corners matters";
  EXPECT_TRUE(IsSliver(a, a, {0.3f, 0, 0})) << "from the point itself";
  EXPECT_FALSE(IsSliver(a, a, {0, 0.32f, 0}));
  EXPECT_FALSE(IsSliver(a, {0.0001f, 0, 0}, {5, 0, 0})) << "still a point";
  EXPECT_TRUE(IsSliver(a, {0.0002f, 0, 0}, {5, 0, 0})) << "a line already";
  EXPECT_FALSE(IsSliver(a, {kInf, 0, 0}, a)) << "what is no number is no sliver";
  EXPECT_FALSE(IsSliver(a, a, {0.1f, 0.3f, 0})) << "exactly the distance";
}

TEST(RemoveFace, RenumbersTheSetsAndKeepsTheScratchOfThePlace) {
  GeometryGroup group;
  group.surfaceSets.resize(2);
  for (const std::uint32_t f : {1u, 3u, 5u}) group.surfaceSets[0].faces.Append(f);
  for (const std::uint32_t f : {4u, 6u}) group.surfaceSets[1].faces.Append(f);
  for (std::uint32_t f = 0; f < 7; ++f) {
    group.faces.At(f).v = {f, f, f};
    group.faces[f].batchIndex = static_cast<std::int32_t>(f);
  }
  RemoveFace(group, 3);
  const auto& sets = group.surfaceSets;
  EXPECT_EQ(std::vector(sets[0].faces.begin(), sets[0].faces.end()),
            (std::vector<std::uint32_t>{1, 4}));
  EXPECT_EQ(std::vector(sets[1].faces.begin(), sets[1].faces.end()),
            (std::vector<std::uint32_t>{3, 5}));
  ASSERT_EQ(group.faces.size(), 6u);
  EXPECT_EQ(group.faces[3].v[0], 4u);
  EXPECT_EQ(group.faces[3].batchIndex, 3);
}

TEST(RemoveFaces, EqualsRemovingOneByOne) {
  for (const unsigned seed : Seeds(600)) {
    Random random(seed);
    GeometryGroup fast;
    fast.vertices.At(2);
    AddFaces(fast, random, random.Below(40), random.OneIn(2));
    GeometryGroup literal = fast;
    std::vector<bool> remove;
    const std::uint32_t rarity = 1 + random.Below(5);
    std::uint32_t next = 0;
    for (std::size_t f = 0; f < fast.faces.size(); ++f) {
      remove.push_back(random.OneIn(rarity));
      remove.back() ? RemoveFace(literal, next) : void(++next);
    }
    RemoveFaces(fast, remove);
    ASSERT_EQ(BitsOf(fast), BitsOf(literal)) << "seed " << seed;
  }
}

Point3 SomePoint(Random& random, bool crowded) {
  const auto component = [&] {
    if (random.OneIn(80)) return random.Pick(std::array{kNaN, kInf, -0.0f, 1e30f});
    if (!random.OneIn(crowded ? 2 : 5)) return 0.5f;
    const float step = crowded ? 0.004f : 0.005f;
    return random.Near(0.5f + step * static_cast<float>(random.Below(crowded ? 40 : 5)));
  };
  return {component(), component(), component()};
}

VertexAttribute SomeAttribute(Random& random, bool crowded) {
  VertexAttribute attribute;
  attribute.normal = SomePoint(random, crowded);
  attribute.uvw = SomePoint(random, crowded);
  attribute.colour.r = random.Unit();
  attribute.position = random.OneIn(3) ? SomePoint(random, false) : Point3{};
  attribute.reserved = random.OneIn(20) ? 1 : 0;
  attribute.material = random.OneIn(10) ? 1 : 0;
  return attribute;
}

/// Few vertices and many corners; sometimes hundreds of different attributes at one vertex.
GeometryGroup GroupToClean(Random& random) {
  GeometryGroup group;
  const bool crowded = random.OneIn(8);
  const std::size_t vertices = crowded ? 4 : 1 + random.Below(8);
  for (std::size_t i = 0; i < vertices; ++i) {
    const auto axis = [&] {
      return random.OneIn(30) ? random.Pick(std::array{kNaN, kInf, -kInf, 1e30f})
                              : 12.0f * random.Unit() - 1.0f;
    };
    group.vertices.Append({axis(), axis(), axis()});
  }
  const std::size_t attributes = crowded ? 300 : 1 + random.Below(60);
  for (std::size_t i = 0; i < attributes; ++i) {
    group.attributes.Append(SomeAttribute(random, crowded));
  }
  AddFaces(group, random, crowded ? 250 : random.Below(70), true);
  for (GroupFace& face : group.faces) {
    for (std::uint32_t& a : face.a) a = random.Below(attributes);
  }
  group.boundsMin = {0, random.OneIn(10) ? kNaN : 0.0f, random.OneIn(10) ? kMax : -3.0f};
  return group;
}

/// Has the attributes shared as gathering does it, which the pass then knows of; with `more`, one
/// that may match comes to them otherwise.
void ShareAttributes(GeometryGroup& group, bool more) {
  const GrowableArray<VertexAttribute> attributes = std::exchange(group.attributes, {});
  std::vector<std::uint32_t> shared;
  for (const VertexAttribute& a : attributes) {
    shared.push_back(static_cast<std::uint32_t>(AddAttribute(group, a)));
  }
  for (GroupFace& face : group.faces) {
    for (std::uint32_t& a : face.a) a = shared[a];
  }
  group.attributeIndex.Release();
  if (!more || group.faces.empty()) return;
  group.faces[0].a[0] = static_cast<std::uint32_t>(group.attributes.size());
  group.attributes.Append(attributes[0]);
}

TEST(CleanVertexAttributes, EqualsTheVisitOfAllBuckets) {
  TestSystem system;
  for (const unsigned seed : Seeds(500)) {
    Random random(seed);
    GeometryGroup fast = GroupToClean(random);
    if (random.OneIn(3)) ShareAttributes(fast, random.OneIn(2));
    fast.attributeIndex.Update({fast.attributes.data(), fast.attributes.size()});
    const std::size_t count = fast.attributes.size();
    GeometryGroup literal = fast;
    const auto size = [&] {
      return random.OneIn(2) ? 1.0f
                             : random.Pick(std::array{0.0f, -0.0f, 3.0f, -1.0f, kNaN, kInf, -kInf,
                                                      1e-42f, 1e30f});
    };
    State().voxelCellSize = {size(), size(), size()};
    CleanVertexAttributes(fast);
    LiteralCleanVertexAttributes(literal, State().voxelCellSize);
    ASSERT_EQ(BitsOf(fast), BitsOf(literal)) << "seed " << seed;

    // Sharing goes on with what is left, also when as many come to it as were merged.
    const VertexAttribute next = SomeAttribute(random, false);
    while (fast.attributes.size() < count) fast.attributes.Append(SomeAttribute(random, false));
    const auto matches = [&](const VertexAttribute& a) { return AttributesMatch(a, next); };
    const auto first = std::ranges::find_if(fast.attributes, matches) - fast.attributes.begin();
    ASSERT_EQ(AddAttribute(fast, next), first) << "seed " << seed;
  }
}

}  // namespace
}  // namespace mapexport
