// A scene of the host out of a fuzzer's bytes.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "fuzz/FuzzBytes.h"
#include "scene/Scene.h"

namespace mapexport {

/// Makes scenes that keep what every scene promises, and nothing beyond it.
class FuzzScene {
 public:
  explicit FuzzScene(FuzzBytes& in) : in_(in) {}

  Scene Make() {
    Scene scene;
    scene.materials.resize(in_.Below(8));
    materials_ = scene.materials.size();
    for (SceneMaterial& material : scene.materials) material = Material();
    meshes_.resize(1 + in_.Below(4));
    for (auto& mesh : meshes_) mesh = std::make_shared<const Mesh>(Soup());
    std::vector<SceneNode> nodes(1 + in_.Below(16));
    std::vector<std::size_t> parents(nodes.size());
    for (std::size_t i = 0; i < nodes.size(); ++i) {
      if (i > 0) parents[i] = in_.Below(i);
      nodes[i] = Node();
    }
    // From the back, a node is complete when its turn comes.
    for (std::size_t i = nodes.size(); i-- > 1;) {
      nodes[parents[i]].children.push_back(std::move(nodes[i]));
    }
    scene.root = std::move(nodes[0]);
    return scene;
  }

 private:
  Point3 Point() {
    const float x = in_.Finite();
    const float y = in_.Finite();
    return {x, y, in_.Finite()};
  }
  Color Colour() {
    const Point3 p = Point();
    return {p.x, p.y, p.z};
  }
  int MaterialIndex() { return static_cast<int>(in_.Below(materials_ + 1)) - 1; }

  Matrix3 Transform() {
    Matrix3 transform;
    const std::uint32_t kind = in_.Below(8);
    for (std::size_t r = 0; r < 4; ++r) {
      if (kind == 7 || (kind >= 4 && r == 3)) transform.rows[r] = Point();
    }
    if (kind == 3) transform.rows[0] = -transform.rows[0];  // mirrored
    if (kind == 6) transform.rows[1] = transform.rows[1] * in_.Finite();
    return transform;
  }

  SceneMaterial Material() {
    constexpr std::array<const char*, 4> kNames{"", "Glass", "Stone", "glass"};
    constexpr std::array<const char*, 6> kFiles{"glass.bmp", "C:\\T\\Glass.TGA", "stone.bmp",
                                                "",          "a.b\\c",           "noDot"};
    SceneMaterial material;
    material.name = in_.Pick(kNames);
    const std::uint32_t kind = in_.Below(8);
    if (kind == 6) material.materialClass = SceneMaterialClass::kOther;
    if (kind >= 4 && kind < 6) {
      material.materialClass = SceneMaterialClass::kMulti;
      material.subMaterials.resize(in_.Below(6));
      for (int& part : material.subMaterials) part = MaterialIndex();
      return material;
    }
    material.ambient = Colour();
    material.diffuse = Colour();
    material.specular = Colour();
    material.opacity = in_.Finite();
    material.shininess = in_.Finite();
    material.shininessStrength = in_.Finite();
    material.shading = static_cast<std::int32_t>(in_.U8()) - 1;
    material.twoSided = in_.OneIn(3);
    if (in_.OneIn(2)) {
      material.diffuseMap = SceneTexture{!in_.OneIn(4), in_.Pick(kFiles), {}};
      if (in_.OneIn(3)) material.diffuseMap->uvTransform = Transform();
    }
    return material;
  }

  std::vector<Point3> Points(std::size_t count) {
    std::vector<Point3> points(count);
    for (std::size_t i = 0; i < count; ++i) {
      const std::uint32_t kind = in_.Below(4);
      points[i] = i > 0 && kind > 0 ? points[in_.Below(i)] : Point();
      if (kind == 2) points[i].x = in_.Finite();  // on a line with an earlier one
      if (kind == 3) points[i].z += in_.Finite();
      if (!std::isfinite(points[i].z)) points[i].z = 0.0f;
    }
    return points;
  }
  std::uint32_t Smoothing() {
    const std::uint32_t kind = in_.Below(8);
    return kind < 4 ? kind : kind < 7 ? 0x80000000u >> kind : in_.U32();
  }

  /// Any triangles, corners repeated or not.
  Mesh Soup() {
    Mesh mesh;
    if (in_.OneIn(8)) return mesh;
    mesh.verts = Points(1 + in_.Below(24));
    mesh.faces.resize(in_.Below(48));
    if (in_.OneIn(2)) mesh.tVerts = Points(1 + in_.Below(12));
    for (Face& face : mesh.faces) {
      for (std::uint32_t& v : face.v) v = in_.Below(mesh.verts.size());
      face.smGroup = Smoothing();
      face.SetMatID(static_cast<std::uint16_t>(in_.OneIn(8) ? in_.U16() : in_.Below(6)));
      if (mesh.tVerts.empty()) continue;
      TVFace& corners = mesh.tvFace.emplace_back();
      for (std::uint32_t& t : corners.t) t = in_.Below(mesh.tVerts.size());
    }
    return mesh;
  }
  static std::string WithoutNul(std::string text) {
    std::erase(text, '\0');
    return text;
  }
  SceneNode Node() {
    constexpr std::array<const char*, 8> kNames{"",        "Box",       "static yard", "STATIC",
                                                "exclude", "Excluded2", "statics",     "x static"};
    SceneNode node;
    node.name = in_.OneIn(8) ? WithoutNul(in_.Text()) : in_.Pick(kNames);
    node.objectTransform = Transform();
    for (std::uint8_t& component : node.wireColor) component = static_cast<std::uint8_t>(in_.U8());
    if (in_.OneIn(2)) node.userProperties = WithoutNul(in_.UserText());
    node.material = MaterialIndex();
    const std::uint32_t object = in_.Below(8);
    node.object = object == 7   ? SceneObject::kNone
                  : object == 6 ? SceneObject::kHelper
                                : SceneObject::kMesh;
    if (object < 5) node.mesh = meshes_[in_.Below(meshes_.size())];
    return node;
  }

  FuzzBytes& in_;
  std::size_t materials_ = 0;
  std::vector<std::shared_ptr<const Mesh>> meshes_;
};

}  // namespace mapexport
