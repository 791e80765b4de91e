// Holds the face table of a group against the lists that it refers to.
#pragma once

#include <cstdint>
#include <vector>

#include "modelreader/ModelFile.h"
#include "modelreader/Place.h"
#include "modelreader/ProblemList.h"

namespace mapexport {

/// Bytes of an entry of the face table: 3 vertex indices, position, surface set, batch.
inline constexpr std::uint64_t kTableEntryBytes = 16;

/// Where the lists that are checked stand in the file.
struct GroupOffsets {
  std::vector<std::uint64_t> batches;  ///< of each batch block
  std::uint64_t planes = 0;            ///< of the planes' count
  std::uint64_t faces = 0;             ///< of the face table's first entry
  std::vector<std::uint64_t> sets;     ///< of the first face index of each surface set
};

/// Checks the wholly read `group`, of the layout kKob, at `place`:
///  - the indices of every face are in range;
///  - the faces without a batch have the planes in turn, and there are as many;
///  - every face of every batch stands once in the table, with the vertices that it has in the
///  batch;
///  - every face stands in one surface set, the one that it names;
///  - the faces of "notrendered" surface sets, and no others, have no batch.
/// Where a list is longer than kModelIndexLimit, indices into it are compared by their low 16 bits.
/// Time and memory are linear in the group.
void CheckFaceTable(const ModelGroup& group, const GroupOffsets& offsets, const Place& place,
                    ProblemList& problems);

}  // namespace mapexport
