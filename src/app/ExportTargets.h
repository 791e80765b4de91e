// Where the files of an export go, and which files it reads.
#pragma once

#include <optional>
#include <string>

#include "app/ExportArguments.h"
#include "output/OutputPlace.h"
#include "output/TakenFiles.h"
#include "settings/SettingsStore.h"

namespace mapexport {

/// The path that the exporter writes when it is given `path`: without a text after the last "." of
/// the whole path it appends ".map".
std::string ModelPath(const std::string& path);

/// The file of the settings that an export with those arguments reads and writes; empty when there
/// is none.
std::string SettingsPath(const ExportArguments& arguments);

/// What the command line names as something to read.
TakenFiles NamedInputs(const ExportArguments& arguments);

/// Adds the settings, and the CXP database that they remember unless another one is picked.
void AddRememberedInputs(const ExportArguments& arguments, SettingsStore& settings,
                         TakenFiles& inputs);

/// Adds the database that the dialog was left with; an empty path is none.
void AddCxp(const std::string& path, TakenFiles& inputs);

// Each throws RunError for a file that can't be had (see FindOutput) and for one that would replace
// an input or another file of the export.

OutputTarget FindModelTarget(const ExportArguments& arguments, const TakenFiles& inputs);

/// Nothing when no file is asked for.
std::optional<OutputTarget> FindDepFileTarget(const ExportArguments& arguments, TakenFiles inputs);
/// Nothing also when the report goes to standard output.
std::optional<OutputTarget> FindReportTarget(const ExportArguments& arguments, TakenFiles inputs);

}  // namespace mapexport
