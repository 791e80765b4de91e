// The settings of an export.
#pragma once

#include <string>
#include <vector>

#include "app/Messages.h"
#include "app/export/ExportArguments.h"
#include "settings/SettingsStore.h"

namespace mapexport {

/// The settings file that an export with these arguments reads and writes; empty for none.
std::string SettingsPath(const ExportArguments& arguments);

/// Opens that file, or settings in memory when there is none. Warns when the file can't be located
/// or read. Throws RunError when it is no regular file.
SettingsStore OpenSettings(const ExportArguments& arguments, Messages& messages);

/// Warns when they can't be saved.
void SaveSettings(SettingsStore& settings, Messages& messages);
/// The same for values that were set in another process.
void SaveSettings(const SettingsStore& settings, const std::vector<RegistryChange>& changes,
                  Messages& messages);

/// The path of the CXP database in the settings; empty for none.
std::string RememberedCxp(SettingsStore& settings);

}  // namespace mapexport
