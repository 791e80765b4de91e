#include "exporter/geometry/NodeMaterials.h"

#include <algorithm>

#include "exporter/materials/SceneMaterials.h"

namespace mapexport {

NodeMaterials::NodeMaterials(Mtl* material) {
  if (material == nullptr) return;
  if (material->ClassID() == kStandardMtlClassID) {
    kind_ = Kind::kStandard;
    table_ = {SceneMaterials().FindOrAddMaterial(static_cast<StdMat&>(*material), textured_)};
  } else if (material->ClassID() == kMultiMtlClassID) {
    kind_ = Kind::kMulti;
    const int count = std::max(material->NumSubMtls(), 0);
    table_.assign(static_cast<std::size_t>(count), -1);
    textured_ = SceneMaterials().FindOrAddSubMaterials(*material, count, table_);
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

Color NodeMaterials::ColourOf(std::int32_t material, const Color& standing,
                              const Color& wireColour) const {
  if (kind_ == Kind::kNone) return wireColour;
  if (textured_) return {0.5f, 0.5f, 0.5f};
  if (material == -1) return standing;
  const ColourRgba& diffuse = SceneMaterials()[static_cast<std::size_t>(material)].diffuse;
  return {diffuse.r, diffuse.g, diffuse.b};
}

}  // namespace mapexport
