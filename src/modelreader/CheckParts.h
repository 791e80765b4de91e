// What is checked of a model file beyond its grammar, and the lengths of its lists.
#pragma once

#include <cstdint>

#include <mapexport/ModelReader.h>

#include "modelreader/CheckFaceTable.h"
#include "modelreader/ModelLengths.h"
#include "modelreader/StrictSource.h"

namespace mapexport {

/// Gets the parts of a file in their order, and checks each group's face table when it has all of
/// the group. Copies nothing: the bytes must stay until the last part was taken.
class CheckParts {
 public:
  explicit CheckParts(ModelLengths& lengths) : lengths_(lengths) {}

  void BeginGroup();
  // Lists that are to come: they take no more memory than for their entries.
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
  GroupParts parts_;
};

}  // namespace mapexport
