// A host mesh from triangles as formats store them.
#include "importer/rebuild/MeshBuilder.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <utility>

#include "importer/LeftOut.h"
#include "system/IsFinite.h"

namespace mapexport {
namespace {

// What is known of a vertex before it has an index in the mesh.
constexpr std::uint32_t kUnused = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint32_t kUsed = kUnused - 1;
constexpr std::uint32_t kNotFinite = kUnused - 2;

/// For `more` elements, and so that many small parts don't copy the list each time.
template <class Element>
void MakeRoom(std::vector<Element>& list, std::size_t more) {
  if (list.capacity() - list.size() >= more) return;
  list.reserve(std::max(2 * list.capacity(), list.size() + more));
}

bool Exists(const MeshPart& part, const CornerIndices& corners) {
  const std::size_t count = part.positions.size();
  return std::ranges::all_of(corners, [count](std::uint32_t v) { return v < count; });
}

}  // namespace

void MeshBuilder::Add(const MeshPart& part) {
  // Parts often use a short run of a long list.
  lowest_ = std::numeric_limits<std::uint32_t>::max();
  std::uint32_t highest = 0;
  for (const CornerIndices& corners : part.triangles) {
    if (!Exists(part, corners)) continue;
    const auto [low, high] = std::minmax({corners[0], corners[1], corners[2]});
    lowest_ = std::min(lowest_, low);
    highest = std::max(highest, high);
  }
  span_ = lowest_ <= highest ? std::size_t{highest} - lowest_ + 1 : 0;
  if (span_ / 16 > part.triangles.size())
    AddSparse(part);
  else
    AddDense(part);
}

/// The same of a part whose vertices are far apart in the list: of a part with only these.
void MeshBuilder::AddSparse(const MeshPart& part) {
  std::vector<std::uint32_t> used;
  used.reserve(3 * part.triangles.size());
  for (const CornerIndices& corners : part.triangles) {
    if (Exists(part, corners)) used.insert(used.end(), corners.begin(), corners.end());
  }
  std::ranges::sort(used);
  used.erase(std::unique(used.begin(), used.end()), used.end());

  const auto those = [&used](std::span<const Point3> points) {
    std::vector<Point3> taken;
    if (points.empty()) return taken;
    taken.reserve(used.size());
    for (const std::uint32_t v : used) taken.push_back(points[v]);
    return taken;
  };
  const std::vector<Point3> positions = those(part.positions);
  const std::vector<Point3> normals = those(part.normals);
  const std::vector<Point3> textureCoordinates = those(part.textureCoordinates);
  std::vector<CornerIndices> triangles(part.triangles.begin(), part.triangles.end());
  for (CornerIndices& corners : triangles) {
    // What isn't there still isn't.
    const bool exists = Exists(part, corners);
    for (std::uint32_t& v : corners) {
      v = exists ? static_cast<std::uint32_t>(std::ranges::lower_bound(used, v) - used.begin())
                 : std::numeric_limits<std::uint32_t>::max();
    }
  }
  MeshPart dense = part;
  dense.positions = positions;
  dense.normals = normals;
  dense.textureCoordinates = textureCoordinates;
  dense.triangles = triangles;
  lowest_ = 0;
  span_ = used.size();
  AddDense(dense);
}

void MeshBuilder::AddDense(const MeshPart& part) {
  KeepSoundTriangles(part);
  if (kept_.empty()) return;
  const std::uint16_t materialId = materials_.IdOf(part.material);
  AddVertices(part);
  MakeRoom(mesh_.faces, kept_.size());
  MakeRoom(normals_, 3 * kept_.size());
  for (const std::uint32_t t : kept_) {
    const CornerIndices& corners = part.triangles[t];
    Face face;
    // Without normals a face is smooth with no other.
    const bool hasNormals = !part.normals.empty() && (part.isFlat.empty() || part.isFlat[t] == 0);
    for (std::size_t k = 0; k < 3; ++k) {
      face.v[k] = indexOf_[corners[k] - lowest_];
      normals_.push_back(hasNormals ? part.normals[corners[k]] : Point3{});
    }
    face.SetMatID(materialId);
    mesh_.faces.push_back(face);
  }
  hasNormals_ = hasNormals_ || !part.normals.empty();
  AddTextureFaces(part);
}

RebuiltMesh MeshBuilder::Finish() {
  if (mesh_.faces.empty()) return {};
  mesh_.verts = positions_.TakePoints();
  if (hasTexture_)
    mesh_.tVerts = textureVertices_.TakePoints();
  else
    mesh_.tvFace.clear();
  if (hasNormals_) leftOut_.creases += RebuildSmoothing(mesh_, normals_);
  return {std::make_shared<const Mesh>(std::move(mesh_)), materials_.Take()};
}

/// Sets kept_, and indexOf_ to which vertices they use. Counts what is left out.
void MeshBuilder::KeepSoundTriangles(const MeshPart& part) {
  indexOf_.assign(span_, kUnused);
  kept_.clear();
  kept_.reserve(part.triangles.size());
  for (std::size_t t = 0; t < part.triangles.size(); ++t) {
    const CornerIndices& corners = part.triangles[t];
    bool isSound = Exists(part, corners);
    if (isSound) {
      for (const std::uint32_t v : corners) {
        std::uint32_t& state = indexOf_[v - lowest_];
        if (state == kUnused && !IsFinite(part.positions[v])) {
          state = kNotFinite;
          ++leftOut_.vertices;
        }
        isSound = isSound && state != kNotFinite;
      }
    }
    if (!isSound) {
      ++leftOut_.faces;
      continue;
    }
    for (const std::uint32_t v : corners) indexOf_[v - lowest_] = kUsed;
    kept_.push_back(static_cast<std::uint32_t>(t));
  }
}

/// Gives the used vertices their indices, in the order of the vertices.
void MeshBuilder::AddVertices(const MeshPart& part) {
  for (std::size_t i = 0; i < indexOf_.size(); ++i) {
    if (indexOf_[i] == kUsed) indexOf_[i] = positions_.Add(part.positions[lowest_ + i]);
  }
}

/// Texture vertices come in the order of their first use.
void MeshBuilder::AddTextureFaces(const MeshPart& part) {
  const std::span<const Point3> coordinates = part.textureCoordinates;
  hasTexture_ = hasTexture_ || !coordinates.empty();
  MakeRoom(mesh_.tvFace, kept_.size());
  if (coordinates.empty()) {
    const std::uint32_t none = textureVertices_.Add({});
    mesh_.tvFace.resize(mesh_.tvFace.size() + kept_.size(), {{none, none, none}});
    return;
  }
  std::ranges::fill(indexOf_, kUnused);
  for (const std::uint32_t t : kept_) {
    TVFace face;
    for (std::size_t k = 0; k < 3; ++k) {
      const std::uint32_t v = part.triangles[t][k];
      const bool isFinite = IsFinite(coordinates[v]);
      if (!isFinite) ++leftOut_.textureCorners;
      std::uint32_t& index = indexOf_[v - lowest_];
      if (index == kUnused) index = textureVertices_.Add(isFinite ? coordinates[v] : Point3{});
      face.t[k] = index;
    }
    mesh_.tvFace.push_back(face);
  }
}

}  // namespace mapexport
