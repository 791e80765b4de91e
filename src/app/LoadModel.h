// Loads the model file of a command.
#pragma once

#include <optional>
#include <string>

#include "app/Messages.h"
#include "cli/ExitStatus.h"
#include "modelreader/ModelFile.h"

namespace mapexport {

struct LoadedModel {
  ModelFile model;
  /// The exit status of a command that succeeds: kOverlongLists when a list of the model is longer
  /// than 16-bit indices can address, else kDone.
  ExitStatus status = ExitStatus::kDone;
};

/// Reads and checks the model file at `path`; without `layout` the extension decides. For a
/// defective file prints an error line for each defect and returns nothing; otherwise prints
/// warnings.
std::optional<LoadedModel> LoadModel(const std::string& path, std::optional<ModelLayout> layout,
                                     Messages& messages);

}  // namespace mapexport
