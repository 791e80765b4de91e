// One run of the export, from the dialog to the written file.
#pragma once

#include "exporter/base/PathString.h"
#include "host/INode.h"

namespace mapexport {

/// Asks for the options, gathers the scene below `root` at `time`, cleans it and writes it to
/// `path`: the QOB layout for the extension "qob" in any case, the second layout for every other.
/// False when the person cancels the dialog or the file can't be opened; then nothing was written.
/// Write errors are ignored. The current scene is set only during the run, however it ends.
bool RunExport(const PathString& path, INode* root, TimeValue time);

}  // namespace mapexport
