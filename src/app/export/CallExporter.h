// Calls the exporter as its host would.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "app/export/ExporterLog.h"
#include "host/System.h"
#include "scene/Scene.h"

namespace mapexport {

/// Lets the exporter write the scene to the file `name` of `folder`, which ends in "/", with lists
/// of at most `longestList` entries, 0 for any number. Throws RunError.
void CallExporter(const Scene& scene, std::size_t longestList, const std::string& folder,
                  const std::string& name, System& system, ExporterLog& log);

/// The milliseconds of the system's clock, as the host gives them: the seed unless one is given.
std::uint32_t ClockSeed();

}  // namespace mapexport
