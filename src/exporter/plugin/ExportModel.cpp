#include "exporter/plugin/ExportModel.h"

#include "exporter/base/ProcessState.h"
#include "exporter/geometry/Gather.h"
#include "exporter/materials/SceneMaterials.h"
#include "exporter/modelwriter/WriteKobRecord.h"
#include "exporter/modelwriter/WriteModelFile.h"
#include "exporter/modelwriter/WriteQobRecord.h"

namespace mapexport {

MaterialsList& SceneMaterials() {
  return State().currentScene->materials;
}

void ExportModel::Gather(INode* node) {
  if (node == nullptr) return;
  CStr name = node->GetName();
  if (name.Length() == 0) name = "NONE";
  GatherGroup(groups, *node, name);
}

void ExportModel::WriteQob(std::ostream& stream) {
  WriteModelFile(materials, groups, WriteQobRecord, stream);
}

void ExportModel::WriteKob(std::ostream& stream) {
  WriteModelFile(materials, groups, WriteKobRecord, stream);
}

}  // namespace mapexport
