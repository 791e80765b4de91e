// A host mesh from the faces of one part of an OBJ file.
#include "importer/obj/ObjMesh.h"

#include <algorithm>
#include <array>
#include <span>
#include <unordered_map>
#include <utility>

#include "importer/LeftOut.h"
#include "importer/obj/TriangulatePolygon.h"
#include "importer/rebuild/MaterialParts.h"
#include "importer/rebuild/PointTable.h"
#include "scene/smoothing/RebuildSmoothing.h"
#include "scene/smoothing/SmoothingBits.h"
#include "system/IsFinite.h"

namespace mapexport {
namespace {

struct Triangle {
  std::array<ObjCorner, 3> corners;
  const ObjFace* face;
};

/// The entries of one of the file's lists that triangles use, and a number for each.
class UsedEntries {
 public:
  static constexpr std::uint32_t kUsed = 0xFFFF'FFFE;  ///< the first number of what is used

  UsedEntries(const std::vector<Triangle>& triangles, std::uint32_t ObjCorner::*list) {
    std::uint32_t last = 0;
    std::size_t corners = 0;
    ForEach(triangles, list, [&](std::uint32_t index) {
      first_ = std::min(first_, index);
      last = std::max(last, index);
      ++corners;
    });
    if (corners == 0) return;
    // A part mostly uses a run of the list; else what it uses is sorted.
    const std::size_t span = std::size_t{last} - first_ + 1;
    if (span > kSparse * corners) {
      ForEach(triangles, list, [&](std::uint32_t index) { sorted_.push_back(index); });
      std::ranges::sort(sorted_);
      sorted_.erase(std::unique(sorted_.begin(), sorted_.end()), sorted_.end());
    }
    numbers_.assign(sorted_.empty() ? span : sorted_.size(), kNotUsed);
    ForEach(triangles, list, [&](std::uint32_t index) { NumberOf(index) = kUsed; });
  }

  /// The number of an entry that is used.
  std::uint32_t& NumberOf(std::uint32_t index) {
    if (sorted_.empty()) return numbers_[index - first_];
    const auto place = std::ranges::lower_bound(sorted_, index) - sorted_.begin();
    return numbers_[static_cast<std::size_t>(place)];
  }

  /// Numbers what is used, in the order of the list.
  void NumberInOrder(const auto& numberOf) {
    for (std::size_t i = 0; i < numbers_.size(); ++i) {
      if (numbers_[i] != kUsed) continue;
      numbers_[i] = numberOf(sorted_.empty() ? first_ + static_cast<std::uint32_t>(i) : sorted_[i]);
    }
  }

 private:
  static constexpr std::uint32_t kNotUsed = 0xFFFF'FFFF;
  static constexpr std::size_t kSparse = 8;

  static void ForEach(const std::vector<Triangle>& triangles, std::uint32_t ObjCorner::*list,
                      const auto& visit) {
    for (const Triangle& triangle : triangles) {
      for (const ObjCorner& corner : triangle.corners) {
        if (corner.*list != kNoObjIndex) visit(corner.*list);
      }
    }
  }

  std::uint32_t first_ = kNotUsed;     ///< the lowest entry
  std::vector<std::uint32_t> sorted_;  ///< empty: the numbers are those of a run of the list
  std::vector<std::uint32_t> numbers_;
};

class Builder {
 public:
  Builder(const ObjFile& file, LeftOut& leftOut) : file_(file), leftOut_(leftOut) {}

  ObjMesh Run(const ObjPart& part, const std::vector<int>& hostMaterials) {
    for (const ObjFace& face : part.faces) AddTriangles(face);
    if (triangles_.empty()) return {};
    Mesh mesh;
    AddVertices(mesh);
    AddTextureFaces(mesh);
    MaterialParts parts;
    for (std::size_t t = 0; t < triangles_.size(); ++t) {
      const int material = triangles_[t].face->material;
      mesh.faces[t].SetMatID(
          parts.IdOf(material < 0 ? -1 : hostMaterials[static_cast<std::size_t>(material)]));
    }
    if (std::ranges::any_of(triangles_, HasNormals))
      SetGroupsFromNormals(mesh);
    else
      SetFileGroups(mesh);
    return {std::make_shared<const Mesh>(std::move(mesh)), parts.Take()};
  }

 private:
  void AddTriangles(const ObjFace& face) {
    const std::span<const ObjCorner> corners(file_.corners.data() + face.firstCorner,
                                             face.cornerCount);
    points_.clear();
    for (const ObjCorner& corner : corners) points_.push_back(file_.positions[corner.position]);
    if (!std::ranges::all_of(points_, IsFinite<Point3>)) {
      leftOut_.faces += points_.size() - 2;
      return;
    }
    if (!TriangulatePolygon(points_, cut_)) ++leftOut_.polygons;
    for (const PolygonTriangle& c : cut_) {
      triangles_.push_back({{corners[c[0]], corners[c[1]], corners[c[2]]}, &face});
    }
  }

  /// Vertices come in the order of the file.
  void AddVertices(Mesh& mesh) const {
    UsedEntries used(triangles_, &ObjCorner::position);
    PointTable table;
    used.NumberInOrder(
        [&](std::uint32_t position) { return table.Add(file_.positions[position]); });
    mesh.faces.resize(triangles_.size());
    for (std::size_t t = 0; t < triangles_.size(); ++t) {
      for (std::size_t k = 0; k < 3; ++k) {
        mesh.faces[t].v[k] = used.NumberOf(triangles_[t].corners[k].position);
      }
    }
    mesh.verts = table.TakePoints();
  }

  /// Texture vertices come in the order of their first use.
  void AddTextureFaces(Mesh& mesh) const {
    const auto isTextured = [](const Triangle& triangle) {
      return std::ranges::any_of(triangle.corners,
                                 [](const ObjCorner& c) { return c.texture != kNoObjIndex; });
    };
    if (std::ranges::none_of(triangles_, isTextured)) return;
    UsedEntries used(triangles_, &ObjCorner::texture);
    PointTable table;
    mesh.tvFace.resize(triangles_.size());
    for (std::size_t t = 0; t < triangles_.size(); ++t) {
      for (std::size_t k = 0; k < 3; ++k) {
        const std::uint32_t index = triangles_[t].corners[k].texture;
        Point3 uvw;
        if (index != kNoObjIndex) uvw = file_.textureVertices[index];
        if (!IsFinite(uvw)) {
          uvw = {};
          ++leftOut_.textureCorners;
        }
        std::uint32_t none = UsedEntries::kUsed;
        std::uint32_t& number = index == kNoObjIndex ? none : used.NumberOf(index);
        if (number == UsedEntries::kUsed) number = table.Add(uvw);
        mesh.tvFace[t].t[k] = number;
      }
    }
    mesh.tVerts = table.TakePoints();
  }

  static bool HasNormals(const Triangle& triangle) {
    return std::ranges::none_of(triangle.corners,
                                [](const ObjCorner& c) { return c.normal == kNoObjIndex; });
  }

  void SetFileGroups(Mesh& mesh) const {
    const bool fit = std::ranges::all_of(triangles_, [](const Triangle& triangle) {
      return triangle.face->smoothing <= kLastSmoothingBit;
    });
    if (!fit) {
      std::vector<std::uint32_t> groupOf(triangles_.size(), kFlatFace);
      NumberFileGroups(0, groupOf);
      return AssignSmoothingBits(mesh, groupOf);
    }
    for (std::size_t t = 0; t < triangles_.size(); ++t) {
      const std::uint32_t group = triangles_[t].face->smoothing;
      mesh.faces[t].smGroup = group == 0 ? 0 : 1u << group;
    }
  }

  /// The file's groups count for faces without normals.
  void SetGroupsFromNormals(Mesh& mesh) const {
    SmoothSurfaces surfaces = FindSmoothSurfaces(mesh, Normals());
    leftOut_.creases += surfaces.lostCreases;
    NumberFileGroups(static_cast<std::uint32_t>(triangles_.size()), surfaces.surfaceOf);
    AssignSmoothingBits(mesh, surfaces.surfaceOf);
  }

  /// Numbers the smoothing groups of the faces without normals from `first` on.
  void NumberFileGroups(std::uint32_t first, std::vector<std::uint32_t>& groupOf) const {
    std::unordered_map<std::uint32_t, std::uint32_t> numberOf;
    for (std::size_t t = 0; t < triangles_.size(); ++t) {
      const std::uint32_t group = triangles_[t].face->smoothing;
      if (group == 0 || HasNormals(triangles_[t])) continue;
      const auto next = first + static_cast<std::uint32_t>(numberOf.size());
      groupOf[t] = numberOf.try_emplace(group, next).first->second;
    }
  }

  std::vector<Point3> Normals() const {
    std::vector<Point3> normals(3 * triangles_.size());
    for (std::size_t t = 0; t < triangles_.size(); ++t) {
      if (!HasNormals(triangles_[t])) continue;
      for (std::size_t k = 0; k < 3; ++k)
        normals[3 * t + k] = file_.normals[triangles_[t].corners[k].normal];
    }
    return normals;
  }

  const ObjFile& file_;
  LeftOut& leftOut_;
  std::vector<Triangle> triangles_;
  std::vector<Point3> points_;  // of the polygon at hand
  std::vector<PolygonTriangle> cut_;
};

}  // namespace

ObjMesh MakeObjMesh(const ObjFile& file, const ObjPart& part, const std::vector<int>& hostMaterials,
                    LeftOut& leftOut) {
  return Builder(file, leftOut).Run(part, hostMaterials);
}

}  // namespace mapexport
