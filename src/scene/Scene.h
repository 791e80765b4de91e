// A scene as the host holds it: evaluated nodes, triangle meshes, materials. Plain values;
// HostScene shows them to an exporter.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/Matrix3.h"
#include "host/Mesh.h"
#include "host/Types.h"

namespace mapexport {

/// Deepest node nesting of a scene; the root is the first level.
inline constexpr int kMaxSceneDepth = 1000;

struct SceneTexture {
  bool isBitmap = true;
  std::string file;  ///< bitmap path as the host stores it, UTF-8
  std::optional<Matrix3> uvTransform;

  friend bool operator==(const SceneTexture&, const SceneTexture&) = default;
};

enum class SceneMaterialClass { kStandard, kMulti, kOther };

struct SceneMaterial {
  SceneMaterialClass materialClass = SceneMaterialClass::kStandard;
  std::string name;
  Color ambient;
  Color diffuse;
  Color specular;
  float opacity = 1.0f;
  float shininess = 0.0f;
  float shininessStrength = 0.0f;
  std::int32_t shading = 0;
  bool twoSided = false;
  std::optional<SceneTexture> diffuseMap;
  std::vector<int> subMaterials;  ///< indices into Scene::materials, -1 for a missing one

  friend bool operator==(const SceneMaterial&, const SceneMaterial&) = default;
};

enum class SceneObject {
  kNone,    ///< the node has no object
  kHelper,  ///< an object that does not convert to a triangle mesh
  kMesh     ///< an object that does
};

struct SceneNode {
  std::string name;
  Matrix3 objectTransform;  ///< object to world, not relative to the parent
  std::array<std::uint8_t, 3> wireColor{128, 128, 128};  ///< red, green, blue
  std::string userProperties;
  int material = -1;  ///< index into Scene::materials, -1 for none
  SceneObject object = SceneObject::kNone;
  std::shared_ptr<const Mesh> mesh;  ///< only with kMesh; null: no render mesh. Instances share it.
  /// Hard edges that the corner normals of a scene file have within smooth surfaces of the mesh,
  /// and that its smoothing groups don't have.
  std::size_t lostCreases = 0;
  std::vector<SceneNode> children;
};

struct Scene {
  std::vector<SceneMaterial> materials;
  SceneNode root;
};

}  // namespace mapexport
