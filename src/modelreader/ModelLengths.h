// How long the lists of a model file are, and which textures its materials name.
#pragma once

#include <cstdint>
#include <vector>

#include "modelreader/ModelFile.h"
#include "modelreader/ModelTextures.h"

namespace mapexport {

struct BatchLengths {
  std::uint32_t faces = 0;
  std::uint32_t corners = 0;
};

struct GroupLengths {
  std::uint32_t vertices = 0;
  std::vector<BatchLengths> batches;
  // Only in the layout kKob.
  std::uint32_t collisionPoints = 0;
  std::uint32_t faces = 0;
  std::uint32_t surfaceSets = 0;
};

struct ModelLengths {
  ModelLayout layout = ModelLayout::kKob;
  std::uint64_t materials = 0;
  std::uint64_t twoSidedMaterials = 0;  ///< of these
  std::vector<TexturedMaterial> texturedMaterials;
  std::vector<GroupLengths> groups;
};

}  // namespace mapexport
