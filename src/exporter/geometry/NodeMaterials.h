// The materials of one node, as its faces see them.
#pragma once

#include <cstdint>
#include <vector>

#include "exporter/base/TextureNames.h"
#include "exporter/materials/MaterialsList.h"
#include "host/Mtl.h"
#include "host/Types.h"

namespace mapexport {

/// The node's table of material indices. A node without a material, or with one of a class that is
/// neither Standard nor Multi/Sub-Object, has no table.
class NodeMaterials {
 public:
  /// Finds or adds the materials in the list, as FindOrAddMaterial does. `material` is the node's,
  /// null for none.
  NodeMaterials(Mtl* material, MaterialsList& materials, TimeValue time,
                const TextureNames& transparentTextures);

  /// The material index of a face with that material ID, -1 for none.
  std::int32_t MaterialOf(std::uint16_t materialId) const;

  /// The colour of a corner with that material, null for none. `standing` is the corner's colour so
  /// far, `wireColour` the node's.
  Color ColourOf(const MaterialRecord* material, const Color& standing,
                 const Color& wireColour) const;

 private:
  enum class Kind { kNone, kStandard, kMulti };

  Kind kind_ = Kind::kNone;
  bool textured_ = false;   ///< some material of the table has a texture
  std::vector<int> table_;  ///< material indices; -1 for a missing sub-material
};

}  // namespace mapexport
