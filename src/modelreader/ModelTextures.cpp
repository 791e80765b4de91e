#include "modelreader/ModelTextures.h"

#include <cstddef>
#include <map>
#include <string_view>

namespace mapexport {

std::vector<ModelTexture> GroupByTexture(std::span<const TexturedMaterial> materials) {
  std::vector<ModelTexture> textures;
  std::map<std::string_view, std::size_t> places;
  for (const auto& [material, texture] : materials) {
    const auto [place, isNew] = places.try_emplace(texture, textures.size());
    if (isNew) textures.push_back({texture, {}});
    textures[place->second].materials.push_back(material);
  }
  return textures;
}

std::vector<ModelTexture> TexturesOf(const ModelFile& model) {
  std::vector<TexturedMaterial> materials;
  for (const ModelMaterial& material : model.materials) {
    reader::Material names;
    names.textureName = material.textureName;
    if (names.HasTexture()) materials.push_back({material.header.name, material.textureName});
  }
  return GroupByTexture(materials);
}

}  // namespace mapexport
