// Faces that share their face flags, or that belong to one static node.
#pragma once

#include <cstdint>

#include "exporter/base/GrowableArray.h"
#include "exporter/materials/MapRecord.h"

namespace mapexport {

class SurfaceSet : public MapRecord {
 public:
  SurfaceSet() : MapRecord(kSurfaceSetType, 1) {}
  ~SurfaceSet() override = default;
  SurfaceSet(const SurfaceSet&) = default;
  SurfaceSet(SurfaceSet&&) = default;
  SurfaceSet& operator=(const SurfaceSet&) = default;
  SurfaceSet& operator=(SurfaceSet&&) = default;

  GrowableArray<std::uint32_t, 100> faces;  ///< indices into the group's faces
  std::uint32_t flags = 0;                  ///< face-flag bits
  /// Smoothing bits of the face gathered last, 0 when they were exactly 1.
  std::uint32_t smoothing = 0;
};

}  // namespace mapexport
