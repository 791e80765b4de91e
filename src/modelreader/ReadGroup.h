// Reads one geometry group of a model file, in either layout.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "modelreader/ByteReader.h"
#include "modelreader/ModelFile.h"
#include "modelreader/Place.h"

namespace mapexport {

/// The type code that a group's record begins with.
std::uint32_t GroupTypeCode(ModelLayout layout);

/// Fewest bytes that a group's record takes.
std::uint64_t LeastGroupBytes(ModelLayout layout);

/// Reads the group at `place` into `group`. Its batches' materials are judged by `materialCount`,
/// if that is known. `isNext` is that of ReadSizedRecord.
void ReadGroup(ByteReader& in, ModelLayout layout, std::optional<std::uint32_t> materialCount,
               const Place& place, const std::function<bool(std::uint64_t offset)>& isNext,
               ModelGroup& group);

}  // namespace mapexport
