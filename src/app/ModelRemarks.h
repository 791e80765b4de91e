// What is remarkable about a sound model file.
#pragma once

#include <span>
#include <string>

#include "app/Messages.h"
#include "cli/ExitStatus.h"
#include "modelreader/ModelLengths.h"
#include "modelreader/ModelProblem.h"
#include "scene/SceneCensus.h"

namespace mapexport {

/// Warns of what the reader found remarkable and of the lists that 16-bit indices can't address, in
/// lines that begin with `name`. With the census of the scene that the model is made of (else
/// null), these lines name the nodes that fill the list most. The status is kOverlongLists when
/// there are such lists, else kDone.
ExitStatus WarnOfModel(std::span<const ModelProblem> problems, const ModelLengths& lengths,
                       const std::string& name, const SceneCensus* census, Messages& messages);

}  // namespace mapexport
