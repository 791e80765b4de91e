#include "HardScenes.h"

#include <cmath>
#include <numbers>
#include <utility>

namespace mapexport {
namespace {

SceneNode MeshNode(std::string name, Mesh mesh) {
  SceneNode node;
  node.name = std::move(name);
  node.object = SceneObject::kMesh;
  node.mesh = std::make_shared<const Mesh>(std::move(mesh));
  return node;
}

Scene SceneOf(Mesh mesh) {
  Scene scene;
  scene.root.children.push_back(MeshNode("Mesh", std::move(mesh)));
  return scene;
}

/// `count` upright faces around one point, each with its own rim.
Mesh Hub(std::size_t count, std::uint32_t smoothing) {
  Mesh mesh;
  mesh.verts.push_back({});
  for (std::uint32_t f = 0; f < count; ++f) {
    const double angle = 2.0 * std::numbers::pi * f / static_cast<double>(count);
    const Point3 direction{static_cast<float>(std::cos(angle)), static_cast<float>(std::sin(angle)),
                           0.0f};
    mesh.verts.push_back(direction * 1000.0f);
    mesh.verts.push_back(direction * 1000.0f + Point3{0.0f, 0.0f, 1000.0f});
    mesh.faces.push_back({{0, 2 * f + 1, 2 * f + 2}, smoothing, 0});
  }
  return mesh;
}

/// The same as flat faces at one point; their texture coordinates there are `step` apart.
Scene TextureRow(std::size_t count, float step) {
  Mesh mesh;
  mesh.verts = {{0, 0, 0}, {100, 0, 0}, {0, 100, 0}};
  mesh.tVerts = {{0, 0, 0}};
  for (std::uint32_t f = 0; f < count; ++f) {
    mesh.tVerts.push_back({step * static_cast<float>(f), 0, 0});
    mesh.faces.push_back({{0, 1, 2}, 0, 0});
    mesh.tvFace.push_back({{f + 1, 0, 0}});
  }
  return SceneOf(std::move(mesh));
}

/// Triangles in a row, each in its own node.
Scene Nodes(std::size_t count, const std::string& name, float spacing) {
  Scene scene;
  for (std::size_t i = 0; i < count; ++i) {
    const float x = spacing * static_cast<float>(i);
    Mesh mesh;
    mesh.verts = {{x, 0, 0}, {x + spacing / 2, 0, 0}, {x, spacing / 2, 0}};
    mesh.faces = {{{0, 1, 2}, 0, 0}};
    scene.root.children.push_back(MeshNode(name + std::to_string(i), std::move(mesh)));
  }
  return scene;
}

Scene DegenerateFaces(std::size_t count) {
  Mesh mesh;
  mesh.verts = {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}};
  mesh.faces.assign(count, {{0, 1, 2}, 2, 0});
  return SceneOf(std::move(mesh));
}

}  // namespace

std::vector<HardScene> HardScenes() {
  return {
      {"gather, flat faces around a point",
       [](std::size_t count) { return SceneOf(Hub(count, 0)); }, 50000},
      {"gather, smooth faces around a point",
       [](std::size_t count) { return SceneOf(Hub(count, 2)); }, 4000, true},
      {"gather, texture coordinates at a point, close by",
       [](std::size_t count) { return TextureRow(count, 0.006f); }, 50000},
      {"gather, texture coordinates at a point, apart",
       [](std::size_t count) { return TextureRow(count, 1.0f); }, 50000},
      {"gather, a node for every face",
       [](std::size_t count) { return Nodes(count, "Node", 10.0f); }, 50000},
      {"gather, a static node for every face",
       [](std::size_t count) { return Nodes(count, "Static", 10.0f); }, 50000},
      {"gather, close nodes", [](std::size_t count) { return Nodes(count, "Node", 0.004f); },
       20000},
      {"gather, far away", [](std::size_t count) { return Nodes(count, "Node", 1e25f); }, 50000},
      {"gather, degenerate faces", DegenerateFaces, 20000},
  };
}

}  // namespace mapexport
