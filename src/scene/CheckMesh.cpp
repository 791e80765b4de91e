#include "scene/CheckMesh.h"

#include <utility>

#include <fmt/format.h>

#include "scene/smoothing/RebuildSmoothing.h"

namespace mapexport {
namespace {

void CheckFaces(const JsonValue& value, const Mesh& mesh) {
  const JsonPlace place(value.Place(), "faces");
  for (std::size_t i = 0; i < mesh.faces.size(); ++i) {
    for (const std::uint32_t index : mesh.faces[i].v) {
      if (index < mesh.verts.size()) continue;
      value.Document().Fail(JsonPlace(place, i),
                            fmt::format("vertex index {} is out of range (the mesh has {})", index,
                                        Count(mesh.verts.size(), "vertex", "vertices")));
    }
  }
}

void CheckTextureFaces(const JsonValue& value, const Mesh& mesh, bool given) {
  const JsonPlace place(value.Place(), "textureFaces");
  if (!given) value.Document().Fail(place, "is required with texture vertices, but missing");
  if (mesh.tvFace.size() != mesh.faces.size()) {
    value.Document().Fail(place, fmt::format("has {}, must have one for each of {}",
                                             Count(mesh.tvFace.size(), "entry", "entries"),
                                             Count(mesh.faces.size(), "face", "faces")));
  }
  for (std::size_t i = 0; i < mesh.tvFace.size(); ++i) {
    for (const std::uint32_t index : mesh.tvFace[i].t) {
      if (index < mesh.tVerts.size()) continue;
      value.Document().Fail(
          JsonPlace(place, i),
          fmt::format("texture vertex index {} is out of range (the mesh has {})", index,
                      Count(mesh.tVerts.size(), "texture vertex", "texture vertices")));
    }
  }
}

void CheckCornerNormals(const JsonValue& value, const Mesh& mesh, std::size_t count) {
  if (count % 3 == 0 && count / 3 == mesh.faces.size()) return;
  value.Document().Fail(
      JsonPlace(value.Place(), "cornerNormals"),
      fmt::format("has {}, must have three for each of {}", Count(count, "entry", "entries"),
                  Count(mesh.faces.size(), "face", "faces")));
}

}  // namespace

FileMesh FinishMesh(const JsonValue& value, Mesh mesh, bool hasTextureFaces,
                    std::span<const Point3> cornerNormals) {
  FileMesh result;
  CheckFaces(value, mesh);
  if (mesh.tVerts.empty()) {
    mesh.tvFace = {};
  } else {
    CheckTextureFaces(value, mesh, hasTextureFaces);
  }
  if (!cornerNormals.empty()) {
    CheckCornerNormals(value, mesh, cornerNormals.size());
    result.lostCreases = RebuildSmoothing(mesh, cornerNormals);
  }
  result.mesh = std::make_shared<const Mesh>(std::move(mesh));
  return result;
}

std::string Count(std::size_t count, std::string_view one, std::string_view many) {
  if (count == 0) return fmt::format("no {}", many);
  return fmt::format("{} {}", count, count == 1 ? one : many);
}

}  // namespace mapexport
