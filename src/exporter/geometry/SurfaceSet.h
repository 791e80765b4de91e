// Faces that share their face flags, or that belong to one static node.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

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

/// Finds the first set with given flags without a scan of all sets: a level can have a set for each
/// of thousands of "static" nodes. A set's flags must not change once a later search has seen them.
class SurfaceSetIndex {
 public:
  SurfaceSetIndex() { first_.fill(kNone); }

  /// The index of the first of `sets` with these flags, -1 when there is none.
  std::int32_t FindFirst(std::span<const SurfaceSet> sets, std::uint32_t flags);

 private:
  static constexpr std::int32_t kNone = -1;

  std::array<std::int32_t, 128> first_{};  ///< by flags: all that keywords can give
  std::size_t seen_ = 0;                   ///< sets that are in the index
};

}  // namespace mapexport
