// The materials of the scene that the importer makes.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "scene/Scene.h"

namespace mapexport {

/// The Standard materials of the source, then the Multi/Sub-Object materials that nodes with
/// several materials need, each made once.
class MaterialTable {
 public:
  explicit MaterialTable(std::vector<SceneMaterial> materials) : materials_(std::move(materials)) {}

  /// The index of the material of a node whose mesh has these materials by its ids (indices of
  /// this table, -1 for none). A new one is named `nodeName`.
  int OfParts(const std::vector<int>& parts, const std::string& nodeName);
  /// Adds a Standard material; returns its index.
  int Add(SceneMaterial material);
  std::vector<SceneMaterial> Take() { return std::move(materials_); }

 private:
  std::vector<SceneMaterial> materials_;
  std::map<std::vector<int>, int> multiMaterials_;
};

}  // namespace mapexport
