#include "convert/BatchMesh.h"

#include <algorithm>
#include <array>
#include <unordered_map>

#include "system/IsFinite.h"

namespace mapexport {

namespace {

using Triangle = std::array<std::uint32_t, 3>;

/// Collects the vertices and triangles of a mesh while their number is unknown.
struct Vertices {
  std::vector<aiVector3D> positions;
  std::vector<aiVector3D> normals;
  std::vector<aiVector3D> textures;
  std::vector<aiColor4D> colours;
  std::vector<Triangle> triangles;
};

template <class T>
T* Copied(const std::vector<T>& values) {
  if (values.empty()) return nullptr;
  auto* const copy = new T[values.size()];
  std::ranges::copy(values, copy);
  return copy;
}

std::unique_ptr<aiMesh> MakeMesh(const Vertices& vertices) {
  if (vertices.triangles.empty()) return nullptr;
  auto mesh = std::make_unique<aiMesh>();
  mesh->mPrimitiveTypes = aiPrimitiveType_TRIANGLE;
  mesh->mNumVertices = static_cast<unsigned>(vertices.positions.size());
  mesh->mVertices = Copied(vertices.positions);
  mesh->mNormals = Copied(vertices.normals);
  mesh->mTextureCoords[0] = Copied(vertices.textures);
  mesh->mNumUVComponents[0] = vertices.textures.empty() ? 0 : 2;
  mesh->mColors[0] = Copied(vertices.colours);
  mesh->mNumFaces = static_cast<unsigned>(vertices.triangles.size());
  mesh->mFaces = new aiFace[mesh->mNumFaces];
  for (std::size_t i = 0; i < vertices.triangles.size(); ++i) {
    aiFace& face = mesh->mFaces[i];
    face.mNumIndices = 3;
    face.mIndices = new unsigned[3];
    // The export reversed every triangle: see TargetSpace.
    std::ranges::reverse_copy(vertices.triangles[i], face.mIndices);
  }
  return mesh;
}

/// The factor that turns `base` into `colour`, as far as there is one.
aiColor4D RelativeTo(const aiColor4D& base, const aiColor4D& colour) {
  const auto part = [](float of, float wanted) { return wanted < of ? wanted / of : 1.0f; };
  return {part(base.r, colour.r), part(base.g, colour.g), part(base.b, colour.b), colour.a};
}

/// Gives the corners of a batch their vertices. A vertex is a pair of position and corner
/// attributes.
class BatchVertices {
 public:
  BatchVertices(const ModelGroup& group, const ModelBatch& batch, const aiColor4D& base,
                const TargetFormat& format, const TargetSpace& space, Changes& changes,
                Vertices& result)
      : group_(group),
        batch_(batch),
        base_(base),
        format_(format),
        space_(space),
        changes_(changes),
        result_(result) {}

  void Add(const ModelBatchFace& face) {
    for (const std::uint16_t vertex : face.vertices) {
      if (IsFinite(space_.Position(group_.vertices[vertex]))) continue;
      ++changes_.lostFaces;
      return;
    }
    Triangle& triangle = result_.triangles.emplace_back();
    for (std::size_t k = 0; k < triangle.size(); ++k) {
      triangle[k] = VertexOf(face.vertices[k], face.corners[k], face);
    }
  }

 private:
  std::uint32_t VertexOf(std::uint16_t vertex, std::uint16_t corner, const ModelBatchFace& face) {
    const auto next = static_cast<std::uint32_t>(result_.positions.size());
    const auto [entry, isNew] = indices_.try_emplace(std::uint32_t{vertex} << 16 | corner, next);
    if (isNew) Append(group_.vertices[vertex], batch_.corners[corner], face.plane.normal);
    return entry->second;
  }

  void Append(const ModelPoint& position, const ModelCorner& corner, const ModelPoint& faceNormal) {
    result_.positions.push_back(space_.Position(position));
    result_.normals.push_back(LegalNormal(space_.Normal(corner.normal), space_.Normal(faceNormal),
                                          format_.yUp, changes_));
    const aiVector2D texture = LegalTexture(space_.Texture(corner.u, corner.v), changes_);
    result_.textures.emplace_back(texture.x, texture.y, 0.0f);
    if (!format_.hasColours) return;
    const aiColor4D colour =
        LegalColour({corner.colour.r, corner.colour.g, corner.colour.b, corner.colour.a}, changes_);
    result_.colours.push_back(format_.multipliesColours ? RelativeTo(base_, colour) : colour);
  }

  const ModelGroup& group_;
  const ModelBatch& batch_;
  const aiColor4D base_;
  const TargetFormat& format_;
  const TargetSpace& space_;
  Changes& changes_;
  Vertices& result_;
  std::unordered_map<std::uint32_t, std::uint32_t> indices_;  ///< by vertex and corner
};

}  // namespace

std::unique_ptr<aiMesh> BatchMesh(const ModelGroup& group, std::span<const std::size_t> batches,
                                  const std::vector<std::vector<bool>>& leftOut,
                                  const aiColor4D& base, const TargetFormat& format,
                                  const TargetSpace& space, Changes& changes) {
  Vertices result;
  for (const std::size_t b : batches) {
    const ModelBatch& batch = group.batches[b];
    BatchVertices vertices(group, batch, base, format, space, changes, result);
    for (std::size_t i = 0; i < batch.faces.size(); ++i) {
      if (!leftOut[b][i]) vertices.Add(batch.faces[i]);
    }
  }
  return MakeMesh(result);
}

std::unique_ptr<aiMesh> CollisionMesh(const ModelGroup& group, const TargetFormat& format,
                                      const TargetSpace& space, Changes& changes) {
  Vertices vertices;
  std::size_t undrawn = 0;
  for (const ModelFace& face : group.faces) {
    if (face.batch != -1) continue;
    // The planes are in the order of these faces; the position in the file may be cut.
    const aiVector3D plane = space.Normal(group.planes[undrawn++].normal);
    const bool finite = std::ranges::all_of(face.vertices, [&](std::uint16_t point) {
      return IsFinite(space.Position(group.collisionPoints[point]));
    });
    if (!finite) {
      ++changes.lostFaces;
      continue;
    }
    const aiVector3D normal = LegalNormal(plane, plane, format.yUp, changes);
    Triangle& triangle = vertices.triangles.emplace_back();
    for (std::size_t k = 0; k < triangle.size(); ++k) {
      triangle[k] = static_cast<std::uint32_t>(vertices.positions.size());
      vertices.positions.push_back(space.Position(group.collisionPoints[face.vertices[k]]));
      vertices.normals.push_back(normal);
    }
  }
  return MakeMesh(vertices);
}

}  // namespace mapexport
