#include "convert/TargetMaterials.h"

#include <algorithm>
#include <cmath>

#include "system/Utf8.h"

namespace mapexport {

namespace {

/// The library multiplies the colour's alpha by the opacity, so that one of them must be 1.
std::unique_ptr<aiMaterial> MakeMaterial(const std::string& name, const aiColor4D& colour,
                                         float opacity, bool twoSided) {
  auto material = std::make_unique<aiMaterial>();
  const auto add = [&material](const auto& value, const char* key, unsigned type, unsigned index) {
    material->AddProperty(&value, 1, key, type, index);
  };
  const aiString text(name);
  material->AddProperty(&text, AI_MATKEY_NAME);
  // Formats with physical surfaces take these ...
  add(colour, AI_MATKEY_BASE_COLOR);
  add(0.0f, AI_MATKEY_METALLIC_FACTOR);
  add(1.0f, AI_MATKEY_ROUGHNESS_FACTOR);
  // ... and the others these.
  add(colour, AI_MATKEY_COLOR_DIFFUSE);
  add(opacity, AI_MATKEY_OPACITY);
  add(static_cast<int>(aiShadingMode_Gouraud), AI_MATKEY_SHADING_MODEL);
  add(twoSided ? 1 : 0, AI_MATKEY_TWOSIDED);
  return material;
}

}  // namespace

std::string LibraryText(std::string_view text) {
  constexpr std::size_t kMostBytes = 1000;
  std::string result;
  while (!text.empty()) {
    const CodePoint point = FirstCodePoint(text);
    const std::string_view shown = !point.valid             ? "\uFFFD"
                                   : IsControl(point.value) ? " "
                                                            : text.substr(0, point.bytes);
    if (result.size() + shown.size() > kMostBytes) break;
    result += shown;
    text.remove_prefix(point.bytes);
  }
  return result;
}

aiColor4D BaseColour(const ModelMaterial& material, Changes& changes) {
  return LegalColour({material.diffuse.r, material.diffuse.g, material.diffuse.b, 1}, changes);
}

std::unique_ptr<aiMaterial> TargetMaterial(const ModelMaterial& material, Changes& changes) {
  const float opacity = std::isnan(material.scalar1) ? 1 : std::clamp(material.scalar1, 0.0f, 1.0f);
  // Readers of text formats would not find a material without a name.
  std::string name = LibraryText(material.header.name);
  if (name.empty()) name = "unnamed";
  return MakeMaterial(name, BaseColour(material, changes), opacity, material.twoSided);
}

std::unique_ptr<aiMaterial> NoMaterial() {
  return MakeMaterial(AI_DEFAULT_MATERIAL_NAME, {1, 1, 1, 1}, 1, false);
}

}  // namespace mapexport
