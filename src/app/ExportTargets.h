// Where the files of an export go, and which files it reads.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "app/ExportArguments.h"
#include "output/OutputTarget.h"
#include "output/TakenFiles.h"
#include "settings/SettingsStore.h"

namespace mapexport {

/// The path that the exporter writes when it is given `path`: without a text after the last "." of
/// the whole path it appends ".map".
std::string ModelPath(const std::string& path);

/// What the command line names as something to read.
TakenFiles NamedInputs(const ExportArguments& arguments);

/// Adds the settings, and the CXP database that they remember unless another one is picked.
void AddRememberedInputs(const ExportArguments& arguments, SettingsStore& settings,
                         TakenFiles& inputs);

/// Adds the database that the dialog was left with; an empty path is none.
void AddCxp(const std::string& path, TakenFiles& inputs);

/// The files that the output depends on. The user's own settings are none: every export of anything
/// would make all outputs old.
std::vector<std::string> Dependencies(const ExportArguments& arguments,
                                      std::vector<std::string> sideFiles, const std::string& cxp);

// Each throws RunError for a file that can't be had (see FindOutput) and for one that would replace
// an input or another file of the export.

OutputTarget FindModelTarget(const ExportArguments& arguments, const TakenFiles& inputs);

/// Nothing when no file is asked for.
std::optional<OutputTarget> FindDepFileTarget(const ExportArguments& arguments, TakenFiles inputs);
std::optional<OutputTarget> FindReportTarget(const ExportArguments& arguments, TakenFiles inputs);

}  // namespace mapexport
