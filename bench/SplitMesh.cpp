#include "SplitMesh.h"

#include <cstddef>
#include <tuple>

#include "MaterialOf.h"
#include "YUp.h"

namespace mapexport {
namespace {

std::vector<Point3> FaceNormals(const Mesh& mesh) {
  std::vector<Point3> normals;
  for (const Face& face : mesh.faces) {
    const Point3& a = mesh.verts[face.v[0]];
    normals.push_back(Normalize(CrossProd(mesh.verts[face.v[1]] - a, mesh.verts[face.v[2]] - a)));
  }
  return normals;
}

}  // namespace

SplitMesh MakeSplitMesh(const Scene& scene, const SceneNode& node) {
  const Mesh& mesh = *node.mesh;
  const std::vector<Point3> faceNormals = FaceNormals(mesh);
  std::vector<std::vector<std::uint32_t>> facesOf(mesh.verts.size());
  for (std::uint32_t f = 0; f < mesh.faces.size(); ++f) {
    for (const std::uint32_t v : mesh.faces[f].v) facesOf[v].push_back(f);
  }
  const auto normalOf = [&](std::uint32_t f, std::size_t k) {
    const std::uint32_t smoothing = mesh.faces[f].smGroup;
    if (smoothing <= 1) return faceNormals[f];
    Point3 sum;
    for (const std::uint32_t other : facesOf[mesh.faces[f].v[k]]) {
      if ((mesh.faces[other].smGroup & smoothing) != 0) sum = sum + faceNormals[other];
    }
    return Normalize(sum);
  };

  SplitMesh split;
  std::map<std::tuple<std::uint32_t, std::uint32_t, float, float, float>, std::uint32_t> known;
  for (std::uint32_t f = 0; f < mesh.faces.size(); ++f) {
    const Face& face = mesh.faces[f];
    for (std::size_t k = 0; k < 3; ++k) {
      const Point3 n = normalOf(f, k);
      const std::uint32_t t = mesh.tVerts.empty() ? 0 : mesh.tvFace[f].t[k];
      const auto [entry, isNew] = known.try_emplace(
          {face.v[k], t, n.x, n.y, n.z}, static_cast<std::uint32_t>(split.positions.size()));
      split.triangles[MaterialOf(scene, node, face)].push_back(entry->second);
      if (!isNew) continue;
      split.positions.push_back(YUp(mesh.verts[face.v[k]]) * (1.0f / kUnitsPerMetre));
      split.normals.push_back(YUp(n));
      // In glTF, v points down.
      if (!mesh.tVerts.empty()) split.uvs.push_back({mesh.tVerts[t].x, 1.0f - mesh.tVerts[t].y});
    }
  }
  return split;
}

}  // namespace mapexport
