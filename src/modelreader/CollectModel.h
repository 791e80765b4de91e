// Puts what the grammar reads of a model file into plain values.
#pragma once

#include <cstdint>

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
  // Lists that are to come: they take no more memory than for their entries.
  void Expect(const reader::Material*, std::uint32_t count) { model_.materials.reserve(count); }
  void Expect(const reader::Group*, std::uint32_t count) { model_.groups.reserve(count); }
  void Expect(const reader::Batch* kind, std::uint32_t count);
  void Expect(const reader::SurfaceSet* kind, std::uint32_t count);
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
