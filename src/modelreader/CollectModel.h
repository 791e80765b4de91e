// Collects a model file as plain values while it is read.
#pragma once

#include <cstdint>

#include <mapexport/ModelReader.h>

#include "modelreader/CheckParts.h"
#include "modelreader/ModelFile.h"
#include "modelreader/StrictSource.h"

namespace mapexport {

/// Takes the parts of a file in order, copies them and has them checked. The bytes may be freed
/// afterwards.
class CollectModel {
 public:
  CollectModel(ModelFile& model, ModelLengths& lengths) : model_(model), check_(lengths) {}

  void BeginGroup();
  // The counts of the lists that follow, so that they take no more memory than their entries.
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
