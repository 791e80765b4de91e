// What the exporter left behind, judged.
#pragma once

#include <string>

#include "modelreader/ReadModelFile.h"

namespace mapexport {

/// Says why the exporter, which does not look at errors of writing, left no sound file at `path`:
/// because it can't be written, else `reason`. Throws RunError about `output`.
[[noreturn]] void ThrowNotExported(const std::string& output, const std::string& path,
                                   const std::string& reason);

/// Checks the model file at `path`, with the layout of `output`. Throws RunError about `output`
/// when it is not sound.
ModelCheckResult CheckExport(const std::string& output, const std::string& path);

}  // namespace mapexport
