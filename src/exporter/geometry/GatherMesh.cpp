#include "exporter/geometry/GatherMesh.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <span>
#include <vector>

#include "exporter/base/DebugLog.h"
#include "exporter/geometry/ConvertCoordinates.h"
#include "exporter/geometry/FaceFlags.h"
#include "exporter/geometry/NodeMaterials.h"
#include "exporter/geometry/SmoothedNormals.h"

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
void GatherVertices(GeometryGroup& group, const Mesh& mesh, const Matrix3& transform,
                    std::int32_t coordinateSystem) {
  group.vertices.Extend(group.vertexCounter + mesh.verts.size());
  Point3* const vertices = group.vertices.data() + group.vertexCounter;
  Point3 lo = group.boundsMin;
  Point3 hi = group.boundsMax;
  for (std::size_t i = 0; i < mesh.verts.size(); ++i) {
    Point3 p = mesh.verts[i] * transform;
    ConvertPoint(p, coordinateSystem);
    vertices[i] = p;
    hi = {p.x > hi.x ? p.x : hi.x, p.y > hi.y ? p.y : hi.y, p.z > hi.z ? p.z : hi.z};
    lo = {p.x < lo.x ? p.x : lo.x, p.y < lo.y ? p.y : lo.y, p.z < lo.z ? p.z : lo.z};
  }
  group.boundsMin = lo;
  group.boundsMax = hi;
  group.vertexCounter += static_cast<std::uint32_t>(mesh.verts.size());
}

void LogInvalidFace(const INode& node) {
  const char* const name = node.GetName();
  DebugLog& log = DebugLog::Instance();
  log.Line() << "Invalid FACE in GROUP" << name << '\n' << std::flush;
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
  const Point3* const vertices = group.vertices.data();
  for (std::uint32_t j = 0; j < mesh.faces.size(); ++j) {
    const Face& hostFace = mesh.faces[j];
    std::array<std::uint32_t, 3> v;
    for (std::size_t k = 0; k < 3; ++k) {
      v[k] = hostFace.v[place.reversed ? 2 - k : k] + place.firstVertex;
    }
    assert(std::ranges::max(v) < group.vertices.size());
    const Point3 corner = vertices[v[0]];
    const Point3 cross = CrossProd(vertices[v[1]] - corner, vertices[v[2]] - corner);
    const float length = Length(cross);
    if (length == 0.0f) {
      LogInvalidFace(node);
      continue;
    }
    GroupFace& face = group.faces.At(group.faceCounter);
    face.v = v;
    face.normal = cross / length;
    face.smoothing = hostFace.smGroup == 1 ? 0 : hostFace.smGroup;
    face.surfaceSet = static_cast<std::int32_t>(place.setIndex);
    face.nodeIndex = group.nodeCounter;
    set.smoothing = face.smoothing;
    set.faces.Append(group.faceCounter);
    ++group.faceCounter;
    hostFaces.push_back(j);
  }
  return hostFaces;
}

/// What the corners of a face have from its material.
struct CornerLook {
  std::int32_t material;
  const Matrix3* uvTransform;  ///< null without a material
  ColourRgba colour;
};

CornerLook LookOf(std::int32_t material, const NodeMaterials& ofNode,
                  const MaterialsList& materials, const Color& wireColour) {
  const VertexAttribute standing;
  const MaterialRecord* record =
      material == -1 ? nullptr : &materials.Records()[static_cast<std::size_t>(material)];
  const Color colour = ofNode.ColourOf(
      record, {standing.colour.r, standing.colour.g, standing.colour.b}, wireColour);
  return {material,
          record == nullptr ? nullptr : &record->uvTransform,
          {colour.r, colour.g, colour.b, standing.colour.a}};
}

/// The texture coordinates of a mesh's corners. Most texture vertices serve several corners of one
/// material, so each is computed again only when the material changes.
class CornerTextures {
 public:
  /// `tVerts` must outlive this.
  CornerTextures(const std::vector<Point3>& tVerts, std::int32_t textureCoordinateMode)
      : tVerts_(tVerts), mode_(textureCoordinateMode), known_(tVerts.size()) {}

  /// Of a corner that names texture vertex `t`.
  const Point3& Of(std::uint32_t t, const CornerLook& look) {
    Known& known = known_[t];
    if (known.material != look.material) {
      known = {look.material, tVerts_[t]};
      if (look.uvTransform != nullptr) known.uvw = known.uvw * *look.uvTransform;
      ConvertTextureCoordinates(known.uvw, mode_);
    }
    return known.uvw;
  }

 private:
  struct Known {
    std::int32_t material = kNoMaterialYet;
    Point3 uvw;
  };
  static constexpr std::int32_t kNoMaterialYet = -2;

  const std::vector<Point3>& tVerts_;
  std::int32_t mode_;
  std::vector<Known> known_;  ///< per texture vertex
};

/// Gives each of the mesh's faces its material and its corners their attributes.
void GatherAttributes(GeometryGroup& group, const INode& node, const Mesh& mesh,
                      const MeshPlace& place, const NodeMaterials& materials,
                      std::span<const std::uint32_t> hostFaces, const GatherContext& context) {
  const Color wireColour = WireColourOf(node);
  CornerTextures textures(mesh.tVerts, context.textureCoordinateMode);
  const std::span<GroupFace> faces(group.faces.end() - hostFaces.size(), hostFaces.size());
  const SmoothedNormals normals(faces, place.firstVertex, mesh.verts.size());
  group.attributeIndex.Update(group.attributes);
  const std::vector<AttributePlace> attributePlaces =
      group.attributeIndex.PlacesOf({group.vertices.data() + place.firstVertex, mesh.verts.size()});
  CornerLook look = LookOf(-1, materials, context.materials, wireColour);
  VertexAttribute corner;  // reused: each corner sets only what differs from the one before
  corner.material = look.material;
  corner.colour = look.colour;
  for (std::size_t f = 0; f < faces.size(); ++f) {
    GroupFace& face = faces[f];
    face.material = materials.MaterialOf(mesh.faces[hostFaces[f]].MatID());
    if (face.material != look.material) {
      look = LookOf(face.material, materials, context.materials, wireColour);
      corner.material = look.material;
      corner.colour = look.colour;
    }
    const std::array<Point3, 3> cornerNormals = normals.OfFace(f);
    for (std::size_t k = 0; k < 3; ++k) {
      corner.position = group.vertices[face.v[k]];
      if (!mesh.tVerts.empty()) {
        corner.uvw = textures.Of(mesh.tvFace[hostFaces[f]].t[place.reversed ? 2 - k : k], look);
      }
      corner.normal = cornerNormals[k];
      face.a[k] = static_cast<std::uint32_t>(
          AddAttribute(group, corner, attributePlaces[face.v[k] - place.firstVertex]));
    }
  }
}

}  // namespace

void GatherMesh(GroupList& groupList, GeometryGroup& group, INode& node, const Mesh& mesh,
                const GatherContext& context) {
  const std::size_t setIndex = ChooseSurfaceSet(groupList, group, node);
  Mtl* material = node.GetMtl();
  const NodeMaterials& materials = groupList.materials
                                       .try_emplace(material, material, context.materials,
                                                    context.time, context.transparentTextures)
                                       .first->second;
  const Matrix3 transform = node.GetObjectTM(context.time);
  // A mirroring transform turns the triangles over; the others are turned over here.
  const bool mirrored = TransformParity(transform) < 0.0f;
  const MeshPlace place{setIndex, group.vertexCounter, !mirrored};
  GatherVertices(group, mesh, transform, context.coordinateSystem);
  const std::vector<std::uint32_t> hostFaces = GatherFaces(group, node, mesh, place);
  GatherAttributes(group, node, mesh, place, materials, hostFaces, context);
  ++group.nodeCounter;
}

}  // namespace mapexport
