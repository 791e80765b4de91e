// What is remarkable about a sound model file.
#pragma once

#include <string>

#include "app/ExitStatus.h"
#include "app/Messages.h"
#include "modelreader/ReadModelFile.h"

namespace mapexport {

/// Warns of what the reader found remarkable and of the lists that 16-bit indices can't address, in
/// lines that begin with `name`. The status is kOverlongLists when there are such lists, else
/// kDone.
ExitStatus WarnOfModel(const ModelReadResult& read, const std::string& name,
                       const Messages& messages);

}  // namespace mapexport
