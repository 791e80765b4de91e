#include "exporter/geometry/SurfaceSet.h"

#include <algorithm>

namespace mapexport {

std::int32_t SurfaceSetIndex::FindFirst(std::span<const SurfaceSet> sets, std::uint32_t flags) {
  if (flags >= first_.size()) {
    const auto found = std::ranges::find(sets, flags, &SurfaceSet::flags);
    return found == sets.end() ? kNone : static_cast<std::int32_t>(found - sets.begin());
  }
  for (; seen_ < sets.size(); ++seen_) {
    const std::uint32_t seenFlags = sets[seen_].flags;
    if (seenFlags < first_.size() && first_[seenFlags] == kNone) {
      first_[seenFlags] = static_cast<std::int32_t>(seen_);
    }
  }
  return first_[flags];
}

}  // namespace mapexport
