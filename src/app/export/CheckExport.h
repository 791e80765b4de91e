// Checks the result of an export.
#pragma once

#include <span>
#include <string>

#include "app/Messages.h"
#include "app/export/ExportArguments.h"
#include "app/export/ExportSystem.h"
#include "modelreader/ReadModelFile.h"
#include "scene/SceneCensus.h"

namespace mapexport {

/// Throws RunError about `output`: the exporter left no valid file at `path`. The reason is that
/// the file can't be written, since the exporter ignores write errors, or else `reason`.
[[noreturn]] void ThrowNotExported(const std::string& output, const std::string& path,
                                   const std::string& reason);

/// Checks the model file at `path`, with the layout of `output`. Throws RunError about `output`
/// when it is defective.
ModelCheckResult CheckExport(const std::string& output, const std::string& path);

/// With --strict, throws RunError about `output` when there is a warning among `told` that --allow
/// does not let pass, except for those about putting files in place: an output must not depend on
/// them.
void RequireNoWarning(const ExportArguments& arguments, const std::string& output,
                      std::span<const Remark> told);

/// Warns when the dialog's final welding is not what was asked for, or when it is coarse for the
/// scene.
void WarnOfWelding(const ExportArguments& arguments, const ExportSystem::Values& values,
                   const SceneCensus& scene, Messages& messages);

}  // namespace mapexport
