// Loads and saves the export options.
#pragma once

#include "exporter/plugin/SettingsKey.h"

namespace mapexport {

/// Reads every stored option. A value that can't be read stays, except the CXP path, which becomes
/// empty. Failures are silent.
void LoadOptions(const SettingsKey& settings);

/// Writes every stored option, in the order in which they are loaded. A write that fails is
/// skipped.
void SaveOptions(const SettingsKey& settings);

}  // namespace mapexport
