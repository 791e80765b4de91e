// Puts what the grammar reads of a model file into plain values.
#pragma once

#include <mapexport/ModelReader.h>

#include "modelreader/CheckFaceTable.h"
#include "modelreader/ModelFile.h"
#include "modelreader/StrictSource.h"

namespace mapexport {

/// Gets the parts of a file in their order, and checks each group's face table when it has all of
/// the group. The bytes may go away afterwards.
class CollectModel {
 public:
  explicit CollectModel(ModelFile& model) : model_(model) {}

  void BeginGroup();
  void Take(StrictSource& in, const reader::Material& material);
  void Take(StrictSource& in, const reader::Batch& batch);
  void Take(StrictSource& in, const reader::SurfaceSet& set);
  void Take(StrictSource& in, const reader::Group& group);

 private:
  ModelFile& model_;
  // Of the group that is being read.
  ModelGroup group_;
  GroupOffsets offsets_;
};

}  // namespace mapexport
