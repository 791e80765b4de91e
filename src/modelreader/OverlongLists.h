// Finds the lists of a model that are too long for 16-bit indices.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "modelreader/ModelLengths.h"

namespace mapexport {

struct OverlongList {
  std::string place;  ///< record path, such as "groups[0].batches[2].corners"
  std::uint64_t count = 0;
  std::uint64_t limit = kModelIndexLimit;

  /// By how many entries the list is too long.
  std::uint64_t Excess() const { return count - limit; }
};

/// The lists of a model that are longer than kModelIndexLimit, in file order: the vertices of a
/// group and the corners of a batch; in the layout kKob also the faces of a batch, the collision
/// points and the faces of a group. Other lists are not addressed by 16-bit indices.
std::vector<OverlongList> OverlongLists(const ModelLengths& lengths);

/// "groups[0].vertices: 70000 entries, 4464 more than the 65536 that 16-bit indices can address".
std::string ToLine(const OverlongList& list);

}  // namespace mapexport
