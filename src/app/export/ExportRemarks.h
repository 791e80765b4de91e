// Warnings and notes about what an export makes of a scene.
#pragma once

#include "app/Messages.h"
#include "app/export/ExportArguments.h"
#include "app/export/ExportSystem.h"
#include "app/export/ExporterTalk.h"
#include "app/export/RunReport.h"

namespace mapexport {

/// Reports the nodes of the scene `name` that the exporter does not visit.
void RemarkOnCensus(const SceneCensus& census, const std::string& name, Messages& messages);

/// Compares the checked output of `report` with its scene. Notes how many triangles are doubled.
/// Warns when welding and slivers took more than a fiftieth of the triangles, when more than a
/// tenth of them have no area, when there are many batches for the triangles, and when no triangle
/// is left. `values` are those of the dialog.
void RemarkOnExport(const RunReport& report, const ExportSystem::Values& values,
                    const ExporterTalk& talk, Messages& messages);

/// What the output is: its name, triangles and size; also as numbers.
Remark ExportedNote(const RunReport& report);

}  // namespace mapexport
