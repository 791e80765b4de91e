// Loads and saves the export options.
#pragma once

#include "exporter/plugin/SettingsKey.h"

namespace mapexport {

/// Reads every stored option. What can't be read keeps its value, but for the CXP path, which is
/// then empty. Failures are silent.
void LoadOptions(const SettingsKey& settings);

/// Writes every stored option, in the order in which they are loaded. A write that fails is
/// skipped.
void SaveOptions(const SettingsKey& settings);

}  // namespace mapexport
