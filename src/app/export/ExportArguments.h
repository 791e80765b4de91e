// The arguments of an `export` command line.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "app/export/ExportOptions.h"
#include "cli/CommandLine.h"
#include "cli/SharedOptions.h"
#include "console/DialogAction.h"

namespace mapexport {

struct ExportArguments {
  GivenOptions given;
  SceneSource scene;
  std::string output;
  /// With --output-folder: the scenes and outputs; `scene` has only the options that all share.
  struct Job {
    std::string scene;
    std::string output;
    std::string log;
  };
  std::vector<Job> jobs;
  std::optional<std::string> outputFolder;
  std::optional<std::uint32_t> mostAtOnce;
  std::vector<DialogAction> actions;  ///< in the order of the dialog's control table
  std::uint32_t longestList = 0;      ///< most entries of a list of the output; 0: any number
  bool unweld = false;                ///< welding is to be switched off
  bool dialog = false;                ///< show the dialog to the user
  std::optional<std::string> settings;
  bool fresh = false;
  std::optional<std::uint32_t> seed;
  bool strict = false;                      ///< warnings are errors
  std::vector<std::string> allowed;         ///< codes of warnings that are none even then
  std::vector<std::string> textures;        ///< folders to look for textures in
  std::optional<std::string> copyTextures;  ///< folder to copy them to
  std::optional<std::string> optionsFile;   ///< the mapexport.toml that gave some of them
  std::optional<std::string> repeat;        ///< the report of the run to repeat
  std::optional<std::string> depFile;
  bool makesRule = false;  ///< the rule of --depfile is wanted, even if another run writes it
  std::optional<std::string> report;
  bool makesReport = false;  ///< the same of --report
  bool watch = false;        ///< export again whenever an input changes
  bool view = false;         ///< write the page of the output
  std::optional<std::string> log;
  bool noLog = false;
  bool quiet = false;
  bool verbose = false;
};

/// Throws UsageError, or RunError when a relative --cxp can't be made absolute because the current
/// directory is unknown.
ExportArguments ReadExportArguments(const CommandLine& line);

/// The arguments that export one of several scenes and leave depfile and report to the caller.
ExportArguments ArgumentsOf(const ExportArguments& all, const ExportArguments::Job& job);

}  // namespace mapexport
