#include "modelreader/OverlongLists.h"

#include <fmt/format.h>

#include "modelreader/Place.h"

namespace mapexport {

std::vector<OverlongList> OverlongLists(const ModelLengths& lengths) {
  std::vector<OverlongList> lists;
  const auto check = [&lists](const Place& parent, std::string_view field, std::size_t count) {
    if (count > kModelIndexLimit) lists.push_back({Place(parent, field).Path(), count});
  };

  const bool hasFaceTable = lengths.layout == ModelLayout::kKob;
  const Place groups("groups");
  for (std::size_t g = 0; g < lengths.groups.size(); ++g) {
    const GroupLengths& group = lengths.groups[g];
    const Place place = groups.At(g);
    check(place, "vertices", group.vertices);
    const Place batches(place, "batches");
    for (std::size_t b = 0; b < group.batches.size(); ++b) {
      const Place batch = batches.At(b);
      if (hasFaceTable) check(batch, "faces", group.batches[b].faces);
      check(batch, "corners", group.batches[b].corners);
    }
    if (!hasFaceTable) continue;
    check(place, "collisionPoints", group.collisionPoints);
    check(place, "faces", group.faces);
  }
  return lists;
}

std::string ToLine(const OverlongList& list) {
  return fmt::format("{}: {} entries, {} more than the {} that 16-bit indices can address",
                     list.place, list.count, list.Excess(), list.limit);
}

}  // namespace mapexport
