// Finds the first surface set with given flags without scanning them all.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "exporter/geometry/SurfaceSet.h"

namespace mapexport {

/// The first set of each combination of keyword flags. A level can have a set for each of thousands
/// of "static" nodes before the next set that keywords name. A set's flags must not change once a
/// later search has seen them.
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
