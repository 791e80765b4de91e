#include "WriteObj.h"

#include <cstdint>
#include <iterator>
#include <optional>

#include <fmt/format.h>

#include "MaterialOf.h"
#include "YUp.h"

namespace mapexport {
namespace {

/// All objects' positions are one list; so are their texture coordinates. Both count from one.
struct Firsts {
  std::size_t vertex = 1;
  std::size_t texture = 1;
};

void WriteNode(const Scene& scene, const SceneNode& node, Firsts& firsts, std::string& text) {
  const auto out = std::back_inserter(text);
  const Mesh& mesh = *node.mesh;
  fmt::format_to(out, "o {}\n", node.name);
  for (const Point3& vertex : mesh.verts) {
    const Point3 p = YUp(vertex * node.objectTransform);
    fmt::format_to(out, "v {} {} {}\n", p.x, p.y, p.z);
  }
  for (const Point3& t : mesh.tVerts) fmt::format_to(out, "vt {} {}\n", t.x, t.y);
  std::optional<std::uint32_t> smoothing;
  std::optional<int> material;
  for (std::size_t f = 0; f < mesh.faces.size(); ++f) {
    const Face& face = mesh.faces[f];
    if (const int own = MaterialOf(scene, node, face); material != own) {
      material = own;
      const auto index = static_cast<std::size_t>(own);
      fmt::format_to(out, "usemtl {}\n", own < 0 ? "None" : scene.materials[index].name);
    }
    // The group 1 alone counts as none.
    if (const std::uint32_t own = face.smGroup == 1 ? 0 : face.smGroup; smoothing != own) {
      smoothing = own;
      fmt::format_to(out, "s {}\n", own);
    }
    text += 'f';
    for (std::size_t k = 0; k < 3; ++k) {
      fmt::format_to(out, " {}", firsts.vertex + face.v[k]);
      if (!mesh.tVerts.empty()) fmt::format_to(out, "/{}", firsts.texture + mesh.tvFace[f].t[k]);
    }
    text += '\n';
  }
  firsts.vertex += mesh.verts.size();
  firsts.texture += mesh.tVerts.size();
}

}  // namespace

void WriteObj(const Scene& scene, const std::string& materialFile, std::ostream& out) {
  out << "mtllib " << materialFile << '\n';
  Firsts firsts;
  std::string text;
  for (const SceneNode& node : scene.root.children) {
    text.clear();
    WriteNode(scene, node, firsts, text);
    out << text;
  }
}

void WriteMtl(const Scene& scene, std::ostream& out) {
  out << "newmtl None\nKd 0.5 0.5 0.5\n";
  for (const SceneMaterial& material : scene.materials) {
    if (material.materialClass != SceneMaterialClass::kStandard) continue;
    out << fmt::format("newmtl {}\nKd {} {} {}\n", material.name, material.diffuse.r,
                       material.diffuse.g, material.diffuse.b);
    if (material.diffuseMap) out << "map_Kd " << material.diffuseMap->file << '\n';
  }
}

}  // namespace mapexport
