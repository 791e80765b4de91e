// The stages of an export as benchmarks.
#pragma once

#include <string>

#include "LevelStages.h"

namespace mapexport {

/// Registers "load", "gather", "weld", "clean", "weld + clean", "cells", "batches", "write all"
/// (from the collision lists to the closed file, with cells and batches), "export kob" and "export
/// qob" (all but loading). Files go to the current folder. Throws when the stages don't
/// add up to the export.
void RegisterStages(LevelStages& stages, const std::string& sceneFile);

}  // namespace mapexport
