// What `view` and `picture` show: a model file, or a scene that is exported for it.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "app/Messages.h"
#include "cli/CommandLine.h"
#include "cli/ExitStatus.h"
#include "modelreader/ModelFile.h"
#include "output/OutputTarget.h"

namespace mapexport {

inline constexpr PositionalInfo kShownPositional{
    "FILE",
    "a model file, whose extension chooses the layout, or a scene of any format, which is exported "
    "into the temporary folder first"};

extern const OptionInfo kShownCoordinates;

/// `own` options of a command, --layout, --coordinates, and those of `export` that shape the model
/// of a scene.
std::vector<OptionInfo> ShownOptions(std::span<const OptionInfo> own);

struct ShownModel {
  ModelFile model;
  ExitStatus status = ExitStatus::kDone;  ///< of a command that succeeds
  std::optional<int> coordinateSystem;    ///< 0 to 3: of a scene, or as --coordinates says
};

/// Reads the model file at `path`, or exports the scene there as `export` would with the options of
/// `line`, and prints warnings. What is read must not be the file at `target`. For a defective
/// model file prints an error line for each defect and returns nothing. Throws RunError and
/// UsageError.
std::optional<ShownModel> LoadShownModel(const CommandLine& line, const std::string& path,
                                         const OutputTarget& target, Messages& messages);

/// Throws UsageError for options that have no effect on any of the files at `paths`.
void RequireEffect(const CommandLine& line, std::span<const std::string> paths);

}  // namespace mapexport
