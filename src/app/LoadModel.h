// A model file that a command was given.
#pragma once

#include <optional>
#include <string>

#include "app/Messages.h"
#include "cli/ExitStatus.h"
#include "modelreader/ModelFile.h"

namespace mapexport {

struct LoadedModel {
  ModelFile model;
  /// How a command that does its work ends: kOverlongLists when a list of the model is longer than
  /// 16-bit indices can address, else kDone.
  ExitStatus status = ExitStatus::kDone;
};

/// Reads and checks the model file at `path`; without a `layout` its extension tells it. Nothing
/// when the file is not sound, each defect then being an error line; else warns of what is
/// remarkable.
std::optional<LoadedModel> LoadModel(const std::string& path, std::optional<ModelLayout> layout,
                                     Messages& messages);

}  // namespace mapexport
