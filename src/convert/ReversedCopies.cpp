#include "convert/ReversedCopies.h"

#include <algorithm>
#include <array>
#include <map>
#include <tuple>
#include <utility>

namespace mapexport {

namespace {

using Key = std::tuple<std::int32_t, std::array<std::uint16_t, 3>>;

/// The same for a face whichever of its vertices comes first.
Key KeyOf(std::int32_t material, std::array<std::uint16_t, 3> vertices) {
  std::rotate(vertices.begin(), std::ranges::min_element(vertices), vertices.end());
  return {material, vertices};
}

bool LooksAway(const ModelBatch& batch, const ModelBatchFace& face) {
  double sum = 0;
  for (const std::uint16_t corner : face.corners) {
    const ModelPoint& normal = batch.corners[corner].normal;
    const ModelPoint& plane = face.plane.normal;
    sum += static_cast<double>(normal.x) * plane.x + static_cast<double>(normal.y) * plane.y +
           static_cast<double>(normal.z) * plane.z;
  }
  return sum < 0;
}

}  // namespace

std::vector<std::vector<bool>> ReversedCopies(const ModelFile& model, const ModelGroup& group) {
  std::vector<std::vector<bool>> copies(group.batches.size());
  std::map<Key, std::size_t> fronts;
  const auto isTwoSided = [&model](const ModelBatch& batch) {
    return batch.material >= 0 &&
           model.materials[static_cast<std::size_t>(batch.material)].twoSided;
  };
  for (const ModelBatch& batch : group.batches) {
    if (!isTwoSided(batch)) continue;
    for (const ModelBatchFace& face : batch.faces) {
      if (!LooksAway(batch, face)) ++fronts[KeyOf(batch.material, face.vertices)];
    }
  }
  for (std::size_t b = 0; b < group.batches.size(); ++b) {
    const ModelBatch& batch = group.batches[b];
    copies[b].resize(batch.faces.size());
    if (!isTwoSided(batch)) continue;
    for (std::size_t f = 0; f < batch.faces.size(); ++f) {
      const auto& v = batch.faces[f].vertices;
      if (!LooksAway(batch, batch.faces[f])) continue;
      const auto front = fronts.find(KeyOf(batch.material, {v[0], v[2], v[1]}));
      if (front == fronts.end() || front->second == 0) continue;
      --front->second;
      copies[b][f] = true;
    }
  }
  return copies;
}

}  // namespace mapexport
