// Checks the face table of a group against the lists that it refers to.
#pragma once

#include <cstdint>
#include <vector>

#include <mapexport/ModelReader.h>

#include "modelreader/ModelFile.h"
#include "modelreader/Place.h"
#include "modelreader/ProblemList.h"

namespace mapexport {

/// Bytes of an entry of the face table: 3 vertex indices, position, surface set, batch.
inline constexpr std::uint64_t kTableEntryBytes = 16;

/// The lists of a group, as views of the file's bytes, and their offsets in the file.
struct GroupLists {
  reader::Group group;
  std::vector<reader::List<reader::Triple>> batches;  ///< the vertex indices of each batch's faces
  std::vector<reader::SurfaceSet> surfaceSets;

  std::vector<std::uint64_t> batchOffsets;  ///< of each batch block
  std::uint64_t planesOffset = 0;           ///< of the planes' count
  std::uint64_t facesOffset = 0;            ///< of the face table's first entry
  std::vector<std::uint64_t> setOffsets;    ///< of the first face index of each surface set
};

/// Checks a group of the layout kKob, which must have been read completely, at `place`:
///  - the indices of every face are in range;
///  - the faces without a batch have the planes one by one, in order, and all of them;
///  - every face of every batch is in the table once, with the same vertices as in the batch;
///  - every face is in one surface set, the one that it names;
///  - the faces of "notrendered" surface sets, and no others, have no batch.
/// Where a list is longer than kModelIndexLimit, indices into it are compared by their low 16 bits.
/// Time and memory are linear in the group.
void CheckFaceTable(const GroupLists& parts, const Place& place, ProblemList& problems);

}  // namespace mapexport
