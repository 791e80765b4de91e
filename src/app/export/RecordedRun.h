// A run to be repeated, from its report.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "app/export/InputFiles.h"
#include "cli/CommandLine.h"

namespace mapexport {

struct RecordedRun {
  std::string report;   ///< path of the report
  std::string program;  ///< the version that exported
  std::string scene;
  std::string layout;  ///< "qob" or "kob"
  std::string sha256;  ///< of the output
  std::uint32_t seed = 0;
  GivenOptions options;  ///< those that shape the output
  std::vector<InputFile> inputs;
};

/// The run of --repeat; nothing without that option. The report is untrusted: its options are
/// checked like those of a command line, and none of them names a file to write. Throws UsageError
/// for a command line that --repeat does not allow, and SceneError or RunError for a report that
/// can't be read or is not of an export that was done.
std::optional<RecordedRun> FindRecordedRun(const CommandLine& line);

/// `line` with the scene, the options and the seed of the run, as if they were given.
CommandLine RepeatingLine(const CommandLine& line, const RecordedRun& run);

/// Throws RunError unless all inputs are what they were, and `output` gets the reported layout.
void RequireSameInputs(const RecordedRun& run, const std::string& output);

/// Throws RunError when the export read other files, the `inputs`, or its output has another
/// `sha256`.
void RequireSameResult(const RecordedRun& run, std::span<const InputFile> inputs,
                       const std::string& output, const std::string& sha256);

}  // namespace mapexport
