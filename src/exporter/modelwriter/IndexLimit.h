// Lists that are longer than the model file's 16-bit indices can address.
#pragma once

#include <cstddef>

#include "exporter/geometry/GeometryGroup.h"

namespace mapexport {

/// Entries that a 16-bit index can address.
inline constexpr std::size_t kIndexableEntries = 65536;

/// Reports a list of the group to the debug log when it has more entries than that.
void LogOverlongList(const GeometryGroup& group, const char* list, std::size_t count);
/// The same for one of several lists of a kind.
void LogOverlongList(const GeometryGroup& group, const char* list, std::size_t ordinal,
                     std::size_t count);

}  // namespace mapexport
