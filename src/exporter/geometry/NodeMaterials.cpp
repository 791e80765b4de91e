#include "exporter/geometry/NodeMaterials.h"

#include <algorithm>

namespace mapexport {

NodeMaterials::NodeMaterials(Mtl* material, MaterialsList& materials, TimeValue time,
                             const TextureNames& transparentTextures) {
  if (material == nullptr) return;
  if (material->ClassID() == kStandardMtlClassID) {
    kind_ = Kind::kStandard;
    table_ = {materials.FindOrAddMaterial(static_cast<StdMat&>(*material), textured_, time,
                                          transparentTextures)};
  } else if (material->ClassID() == kMultiMtlClassID) {
    kind_ = Kind::kMulti;
    const int count = std::max(material->NumSubMtls(), 0);
    table_.assign(static_cast<std::size_t>(count), -1);
    textured_ =
        materials.FindOrAddSubMaterials(*material, count, table_, time, transparentTextures);
  }
}

std::int32_t NodeMaterials::MaterialOf(std::uint16_t materialId) const {
  switch (kind_) {
    case Kind::kStandard:
      return table_[0];
    case Kind::kMulti:
      return materialId < table_.size() ? table_[materialId] : -1;
    case Kind::kNone:
      break;
  }
  return -1;
}

Color NodeMaterials::ColourOf(const MaterialRecord* material, const Color& standing,
                              const Color& wireColour) const {
  if (kind_ == Kind::kNone) return wireColour;
  if (textured_) return {0.5f, 0.5f, 0.5f};
  if (material == nullptr) return standing;
  return {material->diffuse.r, material->diffuse.g, material->diffuse.b};
}

}  // namespace mapexport
