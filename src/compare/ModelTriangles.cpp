#include "compare/ModelTriangles.h"

#include <algorithm>
#include <bit>

namespace mapexport {
namespace {

/// The bits of a plane and of three corners, the corners' positions first.
using Content = std::array<std::uint32_t, 40>;

/// Where a triangle is, and what it belongs to.
struct PlacedTriangle {
  std::uint64_t hash = 0;
  const ModelGroup* group = nullptr;
  const ModelBatch* batch = nullptr;  ///< null for an undrawn triangle
  std::uint32_t face = 0;             ///< in the batch's faces, or else in the group's
  std::uint32_t plane = 0;            ///< of an undrawn one, in the group's planes
  std::uint32_t material = kNoMaterial;
  std::uint32_t set = kNoSet;
  std::uint32_t model = 0;
  std::uint32_t index = 0;  ///< as of ModelTriangle
};

template <class... Floats>
std::uint32_t* Append(std::uint32_t* words, Floats... numbers) {
  ((*words++ = std::bit_cast<std::uint32_t>(numbers)), ...);
  return words;
}

std::uint32_t* AppendPoints(std::uint32_t* words, const std::vector<ModelPoint>& points,
                            const reader::Triple& indices) {
  for (const std::uint16_t index : indices) {
    words = Append(words, points[index].x, points[index].y, points[index].z);
  }
  return words;
}

std::uint32_t* AppendPlane(std::uint32_t* words, const ModelPlane& plane) {
  return Append(words, plane.normal.x, plane.normal.y, plane.normal.z, plane.d);
}

Content ContentOf(const PlacedTriangle& triangle) {
  Content content{};
  const ModelGroup& group = *triangle.group;
  if (triangle.batch == nullptr) {
    std::uint32_t* const words =
        AppendPoints(content.data(), group.collisionPoints, group.faces[triangle.face].vertices);
    AppendPlane(words, group.planes[triangle.plane]);
    return content;
  }
  const ModelBatchFace& face = triangle.batch->faces[triangle.face];
  std::uint32_t* words = AppendPoints(content.data(), group.vertices, face.vertices);
  words = AppendPlane(words, face.plane);
  for (const std::uint16_t index : face.corners) {
    const ModelCorner& corner = triangle.batch->corners[index];
    words = Append(words, corner.normal.x, corner.normal.y, corner.normal.z, corner.u, corner.v,
                   corner.colour.r, corner.colour.g, corner.colour.b, corner.colour.a);
  }
  return content;
}

std::uint64_t HashOf(const Content& content) {
  std::uint64_t hash = 0;
  for (const std::uint32_t word : content) {
    hash = (hash ^ word) * 0x9E3779B97F4A7C15;
    hash ^= hash >> 32;
  }
  return hash;
}

/// For each batch, the shared numbers of its faces' surface sets; adds the undrawn faces to `all`.
std::vector<std::vector<std::uint32_t>> ReadFaceTable(const ModelGroup& group,
                                                      const std::vector<std::uint32_t>& sets,
                                                      std::uint32_t model, std::uint32_t& undrawn,
                                                      std::vector<PlacedTriangle>& all) {
  std::vector<std::vector<std::uint32_t>> setsOf(group.batches.size());
  // How often each position of a batch has occurred. Positions have 16 bits: in a longer batch, one
  // that occurs again is that of a later face.
  std::vector<std::vector<std::uint32_t>> occurred(group.batches.size());
  std::uint32_t plane = 0;
  for (std::uint32_t i = 0; i < group.faces.size(); ++i) {
    const ModelFace& face = group.faces[i];
    const std::uint32_t set = sets[face.surfaceSet];
    if (face.batch < 0) {
      all.push_back({0, &group, nullptr, i, plane++, kUndrawn, set, model, undrawn++});
      continue;
    }
    const auto batch = static_cast<std::size_t>(face.batch);
    const std::size_t faces = group.batches[batch].faces.size();
    setsOf[batch].resize(faces, kNoSet);
    occurred[batch].resize(std::min<std::size_t>(faces, kModelIndexLimit));
    const std::size_t times = occurred[batch][face.position]++;
    setsOf[batch].at(face.position + times * kModelIndexLimit) = set;
  }
  return setsOf;
}

void Place(const ModelFile& file, const SharedNumbers& numbers, std::uint32_t model,
           std::vector<PlacedTriangle>& all) {
  std::uint32_t drawn = 0;
  std::uint32_t undrawn = 0;
  for (std::size_t g = 0; g < file.groups.size(); ++g) {
    const ModelGroup& group = file.groups[g];
    const auto setsOf = ReadFaceTable(group, numbers.sets[g], model, undrawn, all);
    for (std::size_t b = 0; b < group.batches.size(); ++b) {
      const ModelBatch& batch = group.batches[b];
      const std::uint32_t material =
          batch.material < 0 ? kNoMaterial
                             : numbers.materials[static_cast<std::size_t>(batch.material)];
      for (std::uint32_t i = 0; i < batch.faces.size(); ++i) {
        const std::uint32_t set = setsOf[b].empty() ? kNoSet : setsOf[b][i];
        all.push_back({0, &group, &batch, i, 0, material, set, model, drawn++});
      }
    }
  }
}

std::array<ModelPoint, 3> PointsOf(const Content& content) {
  std::array<ModelPoint, 3> points;
  for (std::size_t i = 0; i < points.size(); ++i) {
    const auto number = [&](std::size_t axis) {
      return std::bit_cast<float>(content[points.size() * i + axis]);
    };
    points[i] = {number(0), number(1), number(2)};
  }
  return points;
}

}  // namespace

std::vector<ModelTriangle> NumberTriangles(const Both<const ModelFile*>& models,
                                           const Both<SharedNumbers>& numbers) {
  std::vector<PlacedTriangle> all;
  for (std::uint32_t i = 0; i < models.size(); ++i) Place(*models[i], numbers[i], i, all);
  for (PlacedTriangle& triangle : all) triangle.hash = HashOf(ContentOf(triangle));
  // The hash saves comparisons; it decides nothing, so nobody can make two triangles equal by it.
  std::ranges::sort(all, [](const PlacedTriangle& a, const PlacedTriangle& b) {
    return a.hash != b.hash ? a.hash < b.hash : ContentOf(a) < ContentOf(b);
  });
  std::vector<ModelTriangle> numbered;
  numbered.reserve(all.size());
  Content previous{};
  for (const PlacedTriangle& triangle : all) {
    const Content content = ContentOf(triangle);
    const std::uint32_t last = numbered.empty() ? 0 : numbered.back().content;
    const bool isNew = !numbered.empty() && content != previous;
    numbered.push_back({isNew ? last + 1 : last, triangle.material, triangle.set, triangle.model,
                        triangle.index, PointsOf(content)});
    previous = content;
  }
  return numbered;
}

}  // namespace mapexport
