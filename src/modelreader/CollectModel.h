// Puts what the grammar reads of a model file into plain values.
#pragma once

#include <mapexport/ModelReader.h>

#include "modelreader/CheckParts.h"
#include "modelreader/ModelFile.h"
#include "modelreader/StrictSource.h"

namespace mapexport {

/// Gets the parts of a file in their order, and has them checked. The bytes may go away afterwards.
class CollectModel {
 public:
  CollectModel(ModelFile& model, ModelLengths& lengths) : model_(model), check_(lengths) {}

  void BeginGroup();
  void Take(StrictSource& in, const reader::Material& material);
  void Take(StrictSource& in, const reader::Batch& batch);
  void Take(StrictSource& in, const reader::SurfaceSet& set);
  void Take(StrictSource& in, const reader::Group& group);

 private:
  ModelFile& model_;
  CheckParts check_;
  ModelGroup group_;  // that is being read
};

}  // namespace mapexport
