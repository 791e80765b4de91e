// Checks a model file beyond its grammar, and collects the lengths of its lists.
#pragma once

#include <cstdint>

#include <mapexport/ModelReader.h>

#include "modelreader/CheckFaceTable.h"
#include "modelreader/ModelLengths.h"
#include "modelreader/StrictSource.h"

namespace mapexport {

/// Takes the parts of a file in order, and checks each group's face table when the group is
/// complete. Copies nothing: the bytes must stay until the last part is taken.
class CheckParts {
 public:
  explicit CheckParts(ModelLengths& lengths) : lengths_(lengths) {}

  void BeginGroup();
  // The counts of the lists that follow, so that they take no more memory than their entries.
  void Expect(const void*, std::uint32_t) const {}
  void Expect(const reader::Batch*, std::uint32_t count);
  void Expect(const reader::SurfaceSet*, std::uint32_t count);
  void Take(StrictSource& in, const reader::Material& material);
  void Take(StrictSource& in, const reader::Batch& batch);
  void Take(StrictSource& in, const reader::SurfaceSet& set);
  void Take(StrictSource& in, const reader::Group& group);

 private:
  ModelLengths& lengths_;
  // Of the group that is being read.
  GroupLengths group_;
  GroupLists parts_;
};

}  // namespace mapexport
