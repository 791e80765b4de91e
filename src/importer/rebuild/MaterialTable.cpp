// The materials of the scene that is made.
#include "importer/rebuild/MaterialTable.h"

namespace mapexport {

int MaterialTable::OfParts(const std::vector<int>& parts, const std::string& nodeName) {
  if (parts.size() == 1) return parts.front();
  const auto [entry, isNew] =
      multiMaterials_.try_emplace(parts, static_cast<int>(materials_.size()));
  if (isNew) {
    SceneMaterial multi;
    multi.materialClass = SceneMaterialClass::kMulti;
    multi.name = nodeName;
    multi.subMaterials = parts;
    materials_.push_back(std::move(multi));
  }
  return entry->second;
}

int MaterialTable::Add(SceneMaterial material) {
  materials_.push_back(std::move(material));
  return static_cast<int>(materials_.size()) - 1;
}

}  // namespace mapexport
