#include "Level.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <utility>

#include "LevelShapes.h"

namespace mapexport {
namespace {

// Materials by their index in the list.
constexpr int kGround = 0;   // four textured ones
constexpr int kPlaster = 4;  // two textured ones
constexpr int kMetal = 6;    // textured
constexpr int kPaint = 7;    // three without a texture
constexpr int kWire = 10;    // two-sided, textured
constexpr int kGlass = 11;   // two-sided, without a texture
constexpr int kMixed = 12;   // two of sub-materials: skirting and wall
constexpr int kMaterials = 14;

std::vector<SceneMaterial> Materials() {
  std::vector<SceneMaterial> materials(kMaterials);
  constexpr std::array<const char*, kMaterials> kNames{
      "Grass", "Rock",      "Sand", "Path", "Plaster", "Brick",  "Metal",
      "Red",   "Whitewash", "Blue", "Wire", "Glass",   "Room A", "Room B"};
  for (int m = 0; m < kMaterials; ++m) {
    SceneMaterial& material = materials[static_cast<std::size_t>(m)];
    material.name = kNames[static_cast<std::size_t>(m)];
    const float shade = static_cast<float>(m % 8) / 8.0f;
    material.diffuse = {0.25f + shade / 2.0f, 0.75f - shade / 2.0f, 0.5f};
    material.twoSided = m == kWire || m == kGlass;
    const bool isTextured = m < kPaint || m == kWire;
    if (isTextured) material.diffuseMap = SceneTexture{true, material.name + ".bmp", {}};
  }
  for (int m = kMixed; m < kMaterials; ++m) {
    SceneMaterial& material = materials[static_cast<std::size_t>(m)];
    material.materialClass = SceneMaterialClass::kMulti;
    material.diffuse = {};
    material.subMaterials = {kPaint + m - kMixed, kPlaster + m - kMixed};
  }
  return materials;
}

/// A turn around the upright axis, and a translation. The entries are rounded, because platforms'
/// sines differ in the last bit.
Matrix3 Placed(double angle, const Point3& place) {
  const auto rounded = [](double x) {
    return static_cast<float>(std::round(x * 0x1p20) * 0x1p-20);
  };
  const float c = rounded(std::cos(angle));
  const float s = rounded(std::sin(angle));
  return {{{{c, s, 0.0f}, {-s, c, 0.0f}, {0.0f, 0.0f, 1.0f}, place}}};
}

class LevelMaker {
 public:
  LevelMaker(const LevelSize& size, std::uint32_t seed)
      : size_(size),
        seed_(seed),
        random_(seed),
        extent_(kPatchSize * static_cast<float>(size.patches)) {
    scene_.materials = Materials();
    scene_.root.name = "Level";
  }

  Scene Make() {
    for (int py = 0; py < size_.patches; ++py) {
      for (int px = 0; px < size_.patches; ++px) AddPatch(px, py);
    }
    for (int i = 0; i < size_.rooms; ++i) AddRoom(i);
    for (int i = 0; i < size_.spheres; ++i) AddSphere(i);
    for (int i = 0; i < size_.fences; ++i) {
      Add(SceneNode(), "Fence", i, i % 2 == 0 ? kWire : kGlass, Fence(400.0f, 60.0f),
          Placed(Angle(), PlaceAbove(i, 0.4f, 700.0f)));
    }
    for (int i = 0; i < size_.blockers; ++i) {
      SceneNode node;
      node.userProperties = "notrendered";
      Add(std::move(node), "Blocker", i, -1, Box({200.0f, 40.0f, 120.0f}),
          Placed(Angle(), PlaceAbove(i, 0.6f, 900.0f)));
    }
    return std::move(scene_);
  }

 private:
  double Angle() { return 6.25 * static_cast<double>(Unit(random_)); }

  /// Places in rows over the terrain, far enough from each other.
  Point3 PlaceAbove(int i, float shift, float height) const {
    const int perRow = std::max(1, static_cast<int>(extent_ / kPlaceSize));
    const int row = i / perRow;
    return {(static_cast<float>(i - row * perRow) + shift) * kPlaceSize,
            (static_cast<float>(row) + shift) * kPlaceSize, height};
  }

  void Add(SceneNode node, const std::string& name, int number, int material, Mesh mesh,
           const Matrix3& transform) {
    node.name = name + ' ' + std::to_string(number);
    node.objectTransform = transform;
    node.material = material;
    node.wireColor = {static_cast<std::uint8_t>(number % 256), 128, 64};
    node.object = SceneObject::kMesh;
    if (node.name.front() != 'S' && random_() % 2 == 0) JitterBorder(mesh, random_);
    node.mesh = std::make_shared<const Mesh>(std::move(mesh));
    scene_.root.children.push_back(std::move(node));
  }

  void AddPatch(int px, int py) {
    SceneNode node;
    if ((px + py) % 4 == 0) node.userProperties = "climbable";
    // The group 1 alone counts as none.
    constexpr std::array<std::uint32_t, 4> kSmoothing{2, 0, 4, 1};
    const std::uint32_t smoothing = kSmoothing[random_() % kSmoothing.size()];
    const int material = kGround + static_cast<int>(random_() % 4);
    Add(std::move(node), "Terrain", py * size_.patches + px, material,
        TerrainPatch(px, py, seed_, smoothing),
        Placed(0.0,
               {kPatchSize * static_cast<float>(px), kPatchSize * static_cast<float>(py), 0.0f}));
  }

  void AddRoom(int i) {
    // Multiples of the quad size, so that the corners of neighbouring walls are exactly equal.
    const auto edge = [&] { return 64.0f * static_cast<float>(5 + random_() % 5); };
    const float w = edge();
    const float d = edge();
    const float h = 256.0f;
    const Point3 x{w, 0.0f, 0.0f};
    const Point3 y{0.0f, d, 0.0f};
    const Point3 z{0.0f, 0.0f, h};
    const Matrix3 place = Placed(Angle(), PlaceAbove(i, 0.5f, -2000.0f));
    // The origin and edges of each wall; walls face inwards.
    const std::array<std::array<Point3, 3>, 6> walls{
        {{Point3{}, x, y}, {z, y, x}, {Point3{}, y, z}, {x + y, -y, z}, {x, -x, z}, {y, x, z}}};
    const int material = i % 3 == 2 ? kPlaster : kMixed + i % 3;
    for (std::size_t wall = 0; wall < walls.size(); ++wall) {
      SceneNode node;
      if (wall == 0) node.userProperties = "floorface\r\nclimbable";
      const auto& [origin, u, v] = walls[wall];
      Add(std::move(node), "Room " + std::to_string(i) + " wall", static_cast<int>(wall), material,
          RoomWall(origin, u, v, wall % 2 == 0 ? 0 : 2), place);
    }
  }

  void AddSphere(int i) {
    const bool isTextured = i % 3 != 0;
    const float radius = 40.0f + 4.0f * static_cast<float>(random_() % 10);
    Add(SceneNode(), "Sphere", i, isTextured ? kMetal : kPaint + i % 2, Sphere(radius, isTextured),
        Placed(Angle(), PlaceAbove(i, 0.5f, 500.0f)));
  }

  static constexpr float kPlaceSize = 1200.0f;

  LevelSize size_;
  std::uint32_t seed_;
  LevelRandom random_;
  float extent_;
  Scene scene_;
};

}  // namespace

std::optional<LevelSize> FindLevelSize(std::string_view name) {
  const auto* const found = std::ranges::find(kLevelSizes, name, &LevelSize::name);
  if (found == kLevelSizes.end()) return std::nullopt;
  return *found;
}

Scene MakeLevel(const LevelSize& size, std::uint32_t seed) {
  return LevelMaker(size, seed).Make();
}

std::size_t TriangleCount(const Scene& scene) {
  std::size_t count = 0;
  for (const SceneNode& node : scene.root.children) count += node.mesh->faces.size();
  return count;
}

}  // namespace mapexport
