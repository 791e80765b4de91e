#include "exporter/geometry/DuplicateTwoSidedFaces.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace mapexport {

void DuplicateTwoSidedFaces(GeometryGroup& group, const MaterialsList& materials) {
  if (std::ranges::none_of(materials.Records(), &MaterialRecord::twoSided)) return;
  const std::size_t count = group.faces.size();
  for (std::size_t f = 0; f < count; ++f) {
    if (!materials.IsTwoSided(group.faces[f].material)) continue;
    GroupFace back = group.faces[f];
    back.normal = -back.normal;
    std::swap(back.v[1], back.v[2]);
    std::swap(back.a[1], back.a[2]);
    group.surfaceSets[static_cast<std::size_t>(back.surfaceSet)].faces.Append(
        static_cast<std::uint32_t>(group.faces.size()));
    group.faces.Append(back);
  }
}

}  // namespace mapexport
