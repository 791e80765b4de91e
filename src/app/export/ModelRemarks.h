// Warnings about a valid model file.
#pragma once

#include <span>
#include <string>

#include "app/Messages.h"
#include "cli/ExitStatus.h"
#include "modelreader/ModelLengths.h"
#include "modelreader/ModelProblem.h"
#include "scene/SceneCensus.h"

namespace mapexport {

/// Warns of the reader's findings and of lists that 16-bit indices can't address, in lines that
/// begin with `name`. `census` is that of the model's scene, or null; with it, the lines name the
/// nodes that fill the list most. Returns kOverlongLists when there are such lists, else kDone.
ExitStatus WarnOfModel(std::span<const ModelProblem> problems, const ModelLengths& lengths,
                       const std::string& name, const SceneCensus* census, Messages& messages);

}  // namespace mapexport
