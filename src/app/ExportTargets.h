// Where the files of an export go.
#pragma once

#include <optional>
#include <span>
#include <string>

#include "app/Arguments.h"
#include "app/OutputPlace.h"

namespace mapexport {

/// The path that the exporter writes when it is given `path`: without a text after the last "." of
/// the whole path it appends ".map".
std::string ModelPath(const std::string& path);

// Each throws RunError for a file that can't be had (see FindOutput) and for one that would replace
// the scene or another file of the export.

OutputTarget FindModelTarget(const ExportArguments& arguments);

/// Nothing when no file is asked for.
std::optional<OutputTarget> FindDepFileTarget(const ExportArguments& arguments);
std::optional<OutputTarget> FindReportTarget(const ExportArguments& arguments);

/// Throws RunError when writing to `target` would replace one of `files`, from which the scene is
/// read.
void RequireNotRead(const OutputTarget& target, std::span<const std::string> files);

}  // namespace mapexport
