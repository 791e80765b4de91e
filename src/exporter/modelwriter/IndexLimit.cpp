#include "exporter/modelwriter/IndexLimit.h"

#include <string>

#include "exporter/base/DebugLog.h"

namespace mapexport {

void LogOverlongList(const GeometryGroup& group, const char* list, std::size_t count) {
  if (count <= kIndexableEntries) return;
  DebugLog& log = DebugLog::Instance();
  log.Line() << "Group " << group.name.data() << ": " << list << ": " << count
             << " entries, 16-bit indices address " << kIndexableEntries << '\n'
             << std::flush;
  log.Emit();
}

void LogOverlongList(const GeometryGroup& group, const char* list, std::size_t ordinal,
                     std::size_t count) {
  if (count <= kIndexableEntries) return;
  const std::string which = std::string(list).append(" ").append(std::to_string(ordinal));
  LogOverlongList(group, which.c_str(), count);
}

}  // namespace mapexport
