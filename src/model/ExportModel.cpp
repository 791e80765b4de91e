#include "model/ExportModel.h"

#include "geometry/Gather.h"
#include "materials/SceneMaterials.h"
#include "modelfile/WriteKobRecord.h"
#include "modelfile/WriteModelFile.h"
#include "modelfile/WriteQobRecord.h"
#include "plugin/state/ProcessState.h"

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
