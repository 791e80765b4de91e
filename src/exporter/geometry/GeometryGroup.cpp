#include "exporter/geometry/GeometryGroup.h"

#include <algorithm>

namespace mapexport {

int FindOrAddSurfaceSet(GeometryGroup& group, std::uint32_t flags) {
  const int found = group.surfaceSetIndex.FindFirst(group.surfaceSets, flags);
  if (found >= 0) return found;
  group.surfaceSets.emplace_back().flags = flags;
  return static_cast<int>(group.surfaceSets.size() - 1);
}

int AddStaticSurfaceSet(GeometryGroup& group, const CStr& name) {
  group.surfaceSets.emplace_back().name = name;
  return static_cast<int>(group.surfaceSets.size() - 1);
}

void RemoveFace(GeometryGroup& group, std::uint32_t f) {
  auto& own = group.surfaceSets[static_cast<std::size_t>(group.faces[f].surfaceSet)].faces;
  const auto entry = std::ranges::find(own, f);
  if (entry != own.end()) own.Remove(static_cast<std::size_t>(entry - own.begin()));
  for (SurfaceSet& set : group.surfaceSets) {
    for (std::uint32_t& face : set.faces) {
      if (face >= f) --face;
    }
  }
  group.faces.Remove(f);
}

}  // namespace mapexport
