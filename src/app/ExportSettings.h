// The settings of an export.
#pragma once

#include <string>

#include "app/ExportArguments.h"
#include "app/Messages.h"
#include "settings/SettingsStore.h"

namespace mapexport {

/// The file of the settings that an export with those arguments reads and writes; empty when there
/// is none.
std::string SettingsPath(const ExportArguments& arguments);

/// Opens that file, or settings in memory without one, and warns when there is none although there
/// should be one, or when it can't be read. Throws RunError when it is no regular file.
SettingsStore OpenSettings(const ExportArguments& arguments, Messages& messages);

/// The path of the CXP database that the exporter remembers there, empty for none.
std::string RememberedCxp(SettingsStore& settings);

}  // namespace mapexport
