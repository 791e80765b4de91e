// What the exporter did, judged.
#pragma once

#include <string>

#include "app/ExportArguments.h"
#include "app/ExportSystem.h"
#include "app/Messages.h"
#include "app/RunReport.h"
#include "modelreader/ReadModelFile.h"
#include "scene/SceneCensus.h"

namespace mapexport {

/// Says why the exporter, which does not look at errors of writing, left no sound file at `path`:
/// because it can't be written, else `reason`. Throws RunError about `output`.
[[noreturn]] void ThrowNotExported(const std::string& output, const std::string& path,
                                   const std::string& reason);

/// Checks the model file at `path`, with the layout of `output`. Throws RunError about `output`
/// when it is not sound.
ModelCheckResult CheckExport(const std::string& output, const std::string& path);

/// Warns when welding, as the dialog was left, is not what was asked for, or when it is coarse for
/// the scene.
void WarnOfWelding(const ExportArguments& arguments, const ExportSystem::Values& values,
                   const SceneCensus& scene, Messages& messages);

/// Warns when less is left of the scene's triangles than anyone wants.
void WarnOfLoss(const RunReport& report, Messages& messages);

}  // namespace mapexport
