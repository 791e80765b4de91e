// Sums up a model for a person.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "modelreader/ModelFile.h"

namespace mapexport {

/// Faces of the surface sets with a flag.
struct KeywordUse {
  std::string_view keyword;  ///< of kModelFaceFlags; "none" for sets without flags
  std::size_t sets = 0;      ///< in several groups, those of one name and flags are one
  std::uint64_t faces = 0;
};

/// A list that 16-bit indices address.
struct AddressedList {
  std::string place;  ///< "groups[0].vertices"; empty when the model has none
  std::size_t count = 0;
};

struct ModelSummary {
  std::size_t vertices = 0;  ///< of all groups, like all that follows
  std::size_t batches = 0;
  std::size_t drawn = 0;            ///< triangles in batches
  std::size_t undrawn = 0;          ///< triangles for collision only
  AddressedList fullest;            ///< the one nearest to its limit, the first of equal ones
  std::vector<std::size_t> unused;  ///< materials that no batch has, ascending
};

ModelSummary Summarise(const ModelFile& model);

/// "climbable floorface"; "-" for no flag.
std::string FlagKeywords(std::uint32_t flags);

/// The use of each flag by the faces of the groups, in the order of the flags, then "none". A set
/// with several flags counts for each. Unused flags are left out.
std::vector<KeywordUse> KeywordUses(std::span<const ModelGroup> groups);

}  // namespace mapexport
