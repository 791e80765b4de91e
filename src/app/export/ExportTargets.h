// Where the files of an export go, and which files it reads.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "app/export/ExportArguments.h"
#include "output/OutputTarget.h"
#include "output/TakenFiles.h"
#include "settings/SettingsStore.h"

namespace mapexport {

/// The path that the exporter writes for `path`: it appends ".map" when nothing follows the last
/// "." of the whole path.
std::string ModelPath(const std::string& path);

/// Where the exporter's log goes, unless there is none.
std::string LogPath(const ExportArguments& arguments);

/// The files that the command line names for reading.
TakenFiles NamedInputs(const ExportArguments& arguments);

/// Adds the settings file and, unless another one is picked, the CXP database that the settings
/// remember.
void AddRememberedInputs(const ExportArguments& arguments, SettingsStore& settings,
                         TakenFiles& inputs);

/// Adds the dialog's final database; an empty path means none.
void AddCxp(const std::string& path, TakenFiles& inputs);

/// The files whose content shapes the output, given all options in effect.
std::vector<std::string> ShapingFiles(const ExportArguments& arguments,
                                      std::vector<std::string> sideFiles, const std::string& cxp);

/// The files that the output depends on: those, the file of options and that of --settings. Not the
/// user's own settings: every export changes them, which would make all outputs outdated.
std::vector<std::string> Dependencies(const ExportArguments& arguments,
                                      std::vector<std::string> files);

// Each throws RunError for a file that can't be written (see FindOutput) or that would replace an
// input or another file of the export.

OutputTarget FindModelTarget(const ExportArguments& arguments, const TakenFiles& inputs);

/// Nothing when the command line names no such file.
std::optional<OutputTarget> FindDepFileTarget(const ExportArguments& arguments, TakenFiles inputs);
std::optional<OutputTarget> FindPageTarget(const ExportArguments& arguments, TakenFiles inputs);
std::optional<OutputTarget> FindReportTarget(const ExportArguments& arguments, TakenFiles inputs);

}  // namespace mapexport
