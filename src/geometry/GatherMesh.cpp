#include "geometry/GatherMesh.h"

#include <algorithm>
#include <span>
#include <utility>
#include <vector>

#include "geometry/ConvertCoordinates.h"
#include "geometry/FaceFlags.h"
#include "geometry/NodeMaterials.h"
#include "geometry/SmoothedNormals.h"
#include "materials/SceneMaterials.h"
#include "plugin/state/DebugLog.h"
#include "plugin/state/ProcessState.h"

namespace mapexport {
namespace {

std::size_t ChooseSurfaceSet(const GroupList& groupList, GeometryGroup& group, const INode& node) {
  if (groupList.staticMode && !groupList.staticPending) {
    return static_cast<std::size_t>(groupList.staticSetIndex);
  }
  return static_cast<std::size_t>(FindOrAddSurfaceSet(group, FaceFlagsOf(&node)));
}

Color WireColourOf(const INode& node) {
  constexpr float k = 0.003921569f;  // 1/255
  const std::uint32_t colour = node.GetWireColor();
  return {static_cast<float>(colour & 0xFF) * k, static_cast<float>((colour >> 8) & 0xFF) * k,
          static_cast<float>((colour >> 16) & 0xFF) * k};
}

/// Appends the mesh's vertices in export coordinates and extends the bounds.
void GatherVertices(GeometryGroup& group, const Mesh& mesh, const Matrix3& transform) {
  group.vertices.Reserve(group.vertexCounter + mesh.verts.size());
  Point3& lo = group.boundsMin;
  Point3& hi = group.boundsMax;
  for (const Point3& vertex : mesh.verts) {
    Point3 p = vertex * transform;
    ConvertPoint(p);
    group.vertices.At(group.vertexCounter) = p;
    hi = {p.x > hi.x ? p.x : hi.x, p.y > hi.y ? p.y : hi.y, p.z > hi.z ? p.z : hi.z};
    lo = {p.x < lo.x ? p.x : lo.x, p.y < lo.y ? p.y : lo.y, p.z < lo.z ? p.z : lo.z};
    ++group.vertexCounter;
  }
}

void LogInvalidFace(const INode& node) {
  DebugLog& log = DebugLog::Instance();
  log.Line() << "Invalid FACE in GROUP" << node.GetName() << '\n' << std::flush;
  log.Emit();
}

/// What every face of one mesh has in common.
struct MeshPlace {
  std::size_t setIndex;
  std::uint32_t firstVertex;  ///< the group's index of the mesh's vertex 0
  bool reversed;              ///< corners are taken in the order 2, 1, 0
};

/// Appends a face per host triangle that has an area; returns the host face of each.
std::vector<std::uint32_t> GatherFaces(GeometryGroup& group, const INode& node, const Mesh& mesh,
                                       const MeshPlace& place) {
  SurfaceSet& set = group.surfaceSets[place.setIndex];
  std::vector<std::uint32_t> hostFaces;
  hostFaces.reserve(mesh.faces.size());
  group.faces.Reserve(group.faceCounter + mesh.faces.size());
  set.faces.Reserve(set.faces.size() + mesh.faces.size());
  for (std::uint32_t j = 0; j < mesh.faces.size(); ++j) {
    const Face& hostFace = mesh.faces[j];
    GroupFace face;
    face.surfaceSet = static_cast<std::int32_t>(place.setIndex);
    face.nodeIndex = group.nodeCounter;
    for (std::size_t k = 0; k < 3; ++k) {
      face.v[k] = hostFace.v[place.reversed ? 2 - k : k] + place.firstVertex;
    }

    const Point3& corner = group.vertices[face.v[0]];
    const Point3 cross =
        CrossProd(group.vertices[face.v[1]] - corner, group.vertices[face.v[2]] - corner);
    if (Length(cross) == 0.0f) {
      LogInvalidFace(node);
      continue;
    }
    face.normal = Normalize(cross);
    face.smoothing = hostFace.smGroup == 1 ? 0 : hostFace.smGroup;
    set.smoothing = face.smoothing;
    group.faces.At(group.faceCounter) = face;
    set.faces.Append(group.faceCounter);
    ++group.faceCounter;
    hostFaces.push_back(j);
  }
  return hostFaces;
}

/// The texture coordinates of corner `k` of a face, as the host and the material have them,
/// converted.
Point3 TextureCoordinates(const Mesh& mesh, std::uint32_t hostFace, std::size_t k,
                          std::int32_t material) {
  Point3 uvw = mesh.tVerts[mesh.tvFace[hostFace].t[k]];
  if (material != -1) {
    uvw = uvw * SceneMaterials()[static_cast<std::size_t>(material)].uvTransform;
  }
  ConvertTextureCoordinates(uvw);
  return uvw;
}

/// Gives each of the mesh's faces its material and its corners their attributes.
void GatherAttributes(GeometryGroup& group, const INode& node, const Mesh& mesh,
                      const MeshPlace& place, const NodeMaterials& materials,
                      std::span<const std::uint32_t> hostFaces) {
  const Color wireColour = WireColourOf(node);
  const std::span<GroupFace> faces(group.faces.end() - hostFaces.size(), hostFaces.size());
  const SmoothedNormals normals(faces, place.firstVertex, mesh.verts.size());
  for (std::size_t f = 0; f < faces.size(); ++f) {
    GroupFace& face = faces[f];
    face.material = materials.MaterialOf(mesh.faces[hostFaces[f]].MatID());
    const std::array<Point3, 3> cornerNormals = normals.OfFace(f);
    for (std::size_t k = 0; k < 3; ++k) {
      VertexAttribute corner;
      corner.material = face.material;
      corner.position = group.vertices[face.v[k]];
      if (!mesh.tVerts.empty()) {
        corner.uvw =
            TextureCoordinates(mesh, hostFaces[f], place.reversed ? 2 - k : k, face.material);
      }
      corner.normal = cornerNormals[k];
      const Color standing{corner.colour.r, corner.colour.g, corner.colour.b};
      const Color colour = materials.ColourOf(face.material, standing, wireColour);
      corner.colour = {colour.r, colour.g, colour.b, corner.colour.a};
      face.a[k] = static_cast<std::uint32_t>(AddAttribute(group, corner));
    }
  }
}

}  // namespace

void GatherMesh(GroupList& groupList, GeometryGroup& group, INode& node, const Mesh& mesh) {
  const std::size_t setIndex = ChooseSurfaceSet(groupList, group, node);
  Mtl* material = node.GetMtl();
  const NodeMaterials& materials =
      groupList.materials.try_emplace(material, material).first->second;
  const Matrix3 transform = node.GetObjectTM(State().currentTime);
  // A mirroring transform turns the triangles over; the others are turned over here.
  const bool mirrored = TransformParity(transform) < 0.0f;
  const MeshPlace place{setIndex, group.vertexCounter, !mirrored};
  GatherVertices(group, mesh, transform);
  const std::vector<std::uint32_t> hostFaces = GatherFaces(group, node, mesh, place);
  GatherAttributes(group, node, mesh, place, materials, hostFaces);
  ++group.nodeCounter;
}

}  // namespace mapexport
