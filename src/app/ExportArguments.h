// What a command line of `export` asks for.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "cli/CommandLine.h"
#include "cli/SharedOptions.h"
#include "console/DialogAction.h"

namespace mapexport {

struct ExportArguments {
  SceneSource scene;
  std::string output;
  std::vector<DialogAction> actions;  ///< in the order of the dialog's control table
  bool unweld = false;                ///< welding is to be off
  bool dialog = false;                ///< a person is to decide
  std::optional<std::string> settings;
  bool fresh = false;
  std::optional<std::uint32_t> seed;
  std::optional<std::string> depFile;
  std::optional<std::string> report;
  std::optional<std::string> log;
  bool noLog = false;
  bool quiet = false;
};

/// The options of the command.
std::span<const OptionInfo> ExportOptions();

/// Throws UsageError; RunError when the current directory, against which a relative --cxp is made
/// absolute, can't be had.
ExportArguments ReadExportArguments(const CommandLine& line);

}  // namespace mapexport
