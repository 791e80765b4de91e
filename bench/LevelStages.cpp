#include "LevelStages.h"

#include <fstream>

#include "BenchHost.h"
#include "exporter/geometry/CollisionLists.h"
#include "exporter/geometry/RemoveDegenerateFaces.h"
#include "exporter/geometry/WeldVertices.h"
#include "exporter/plugin/CurrentExport.h"
#include "scene/SceneFile.h"

namespace mapexport {

void Weld(GeometryGroup& group) {
  if (WeldVertices(group, kWeldDistance)) RemoveDegenerateFaces(group);
}

bool WriteKobFile(ExportModel& model, const std::string& path) {
  std::ofstream file(path, std::ios::binary);
  model.WriteKob(file);
  file.close();
  return file.good();
}

LevelStages::LevelStages(const std::string& sceneFile)
    : scene(ReadSceneFile(sceneFile)), gathered(scene) {
  DuplicateTwoSidedFaces(gathered.group);
  welded = gathered.group;
  Weld(welded);
  cleaned = welded;
  CleanVertexAttributes(cleaned);
  prepared = cleaned;
  PrepareCollisionLists(prepared);
}

std::unique_ptr<ExportModel> LevelStages::ModelToWrite() const {
  auto model = std::make_unique<ExportModel>(0);
  model->materials = gathered.model.materials;
  model->groups.Append(std::make_unique<GeometryGroup>(cleaned));
  BenchHost::Begin(*model);
  return model;
}

}  // namespace mapexport
