// Reads one batch block of a geometry group.
#pragma once

#include <cstdint>
#include <optional>

#include "modelreader/ByteReader.h"
#include "modelreader/ModelFile.h"
#include "modelreader/Place.h"

namespace mapexport {

/// Fewest bytes that a batch block takes: material, face count, corner count.
inline constexpr std::uint64_t kLeastBatchBytes = 12;

/// What the indices of a batch refer to.
struct BatchSurroundings {
  std::optional<std::uint32_t> materialCount;  ///< none: not known
  std::uint64_t vertexCount = 0;
  bool facesAreIndexed = false;  ///< a face table refers to the batch's faces by 16-bit indices
};

/// Reads the batch at `place` and checks its indices.
void ReadBatch(ByteReader& in, const BatchSurroundings& around, const Place& place,
               ModelBatch& batch);

}  // namespace mapexport
