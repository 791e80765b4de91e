#include "exporter/plugin/ExportModel.h"

#include "exporter/modelwriter/WriteModelFile.h"
#include "exporter/plugin/CurrentExport.h"

namespace mapexport {
namespace {

/// Prepares and writes one group after the other, so that the lists of one are in memory at a time.
void WriteModel(const ExportModel& model, void (*writeGroup)(GeometryGroup&, BinaryWriter&),
                std::ostream& stream) {
  BinaryWriter out(stream);
  const SizeField geometrySize = BeginModelFile(model.materials, model.groups.Count(), out);
  for (std::size_t i = 0; i < model.groups.Count(); ++i) writeGroup(*model.groups.At(i), out);
  EndModelFile(geometrySize, out);
}

}  // namespace

void ExportModel::Gather(INode* node) {
  if (node == nullptr) return;
  CStr name = node->GetName();
  if (name.Length() == 0) name = "NONE";
  GatherGroup(groups, *node, name);
}

void ExportModel::WriteQob(std::ostream& stream) {
  WriteModel(*this, WriteQobRecord, stream);
}

void ExportModel::WriteKob(std::ostream& stream) {
  WriteModel(*this, WriteKobRecord, stream);
}

}  // namespace mapexport
