// The textures of a model, with the materials that name them.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "modelreader/ModelFile.h"

namespace mapexport {

/// A material with a texture.
struct TexturedMaterial {
  std::string material;
  std::string texture;
};

struct ModelTexture {
  std::string name;
  std::vector<std::string> materials;  ///< in file order
};

/// Each texture once, in the order in which the materials name them first.
std::vector<ModelTexture> GroupByTexture(std::span<const TexturedMaterial> materials);

std::vector<ModelTexture> TexturesOf(const ModelFile& model);

}  // namespace mapexport
