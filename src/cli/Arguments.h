// What a command line asks for.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "cli/SceneSource.h"
#include "console/DialogAction.h"
#include "convert/TargetFormat.h"
#include "convert/TargetSpace.h"
#include "modelreader/ModelFile.h"

namespace mapexport {

/// A text for standard output: --help, --version or the list of formats.
struct ShowText {
  std::string text;
};

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

struct SceneArguments {
  SceneSource scene;
  std::optional<std::string> output;
};

struct InspectArguments {
  std::string file;
  bool json = false;
  bool summary = false;
  std::optional<ModelLayout> layout;
};

struct ViewArguments {
  std::string file;
  std::optional<std::string> output;
  std::optional<ModelLayout> layout;
  int coordinateSystem = 0;  ///< 0 to 3
};

struct ConvertArguments {
  std::string file;
  std::string output;
  const TargetFormat* format = nullptr;  ///< that of the output's extension
  ExportedSpace exported;
  std::optional<float> scale;
  std::optional<ModelLayout> layout;
  bool quiet = false;
};

using Arguments = std::variant<ShowText, ExportArguments, SceneArguments, InspectArguments,
                               ConvertArguments, ViewArguments>;

/// `arguments` are those after the program's name. Throws UsageError; RunError when the current
/// directory, against which a relative --cxp is made absolute, can't be had.
Arguments ParseArguments(const std::vector<std::string>& arguments);

}  // namespace mapexport
