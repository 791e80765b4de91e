#include "exporter/geometry/RemoveFaces.h"

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>

namespace mapexport {
namespace {

/// Where the faces went.
struct Removal {
  std::vector<std::uint32_t> keptBefore;  ///< per former face: how many before it were kept
  /// Per removed face: the surface set that still lists it, kDropped once its entry is gone.
  std::vector<std::int32_t> owners;
};

constexpr std::int32_t kDropped = -1;

/// Moves the faces that stay down, in their order.
Removal FilterFaces(GeometryGroup& group, const std::vector<bool>& remove) {
  Removal removal;
  removal.keptBefore.reserve(group.faces.size());
  std::uint32_t kept = 0;
  for (std::size_t f = 0; f < group.faces.size(); ++f) {
    removal.keptBefore.push_back(kept);
    if (remove[f]) {
      removal.owners.push_back(group.faces[f].surfaceSet);
    } else {
      if (kept != f) group.faces[kept] = group.faces[f];
      ++kept;
    }
  }
  group.faces.Shrink(kept);
  return removal;
}

/// Renumbers the list of surface set `setIndex` and leaves out the first entry of each removed face
/// that belongs to the set.
void FilterList(GrowableArray<std::uint32_t, 100>& list, std::int32_t setIndex,
                const std::vector<bool>& remove, Removal& removal) {
  const auto removedFaces = static_cast<std::uint32_t>(removal.owners.size());
  std::size_t kept = 0;
  for (const std::uint32_t f : list) {
    if (f >= remove.size()) {
      list[kept++] = f - removedFaces;  // no face at all, but above every removed one
      continue;
    }
    std::uint32_t renumbered = removal.keptBefore[f];
    if (remove[f]) {
      const std::uint32_t removedBefore = f - renumbered;
      std::int32_t& owner = removal.owners[removedBefore];
      if (owner == setIndex) {
        owner = kDropped;
        continue;
      }
      // A second entry, or one in another set, then names the face before the removed one. Without
      // such a face it wraps around, and every later removal lowers it once more.
      renumbered = renumbered > 0 ? renumbered - 1 : removedBefore - removedFaces;
    }
    list[kept++] = renumbered;
  }
  list.Shrink(kept);
}

}  // namespace

void RemoveFaces(GeometryGroup& group, const std::vector<bool>& remove) {
  assert(remove.size() == group.faces.size());
  if (std::ranges::find(remove, true) == remove.end()) return;
  Removal removal = FilterFaces(group, remove);
  std::int32_t setIndex = 0;
  for (SurfaceSet& set : group.surfaceSets) FilterList(set.faces, setIndex++, remove, removal);
}

}  // namespace mapexport
