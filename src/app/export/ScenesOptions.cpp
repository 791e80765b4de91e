#include "app/export/ScenesOptions.h"

#include <utility>

#include <fmt/format.h>

#include "app/export/OptionsFile.h"
#include "cli/OptionReading.h"

namespace mapexport {

std::optional<std::string> AddFileOptions(CommandLine& line, OptionOrigins& origins) {
  if (line.Has("fresh")) return std::nullopt;
  FileOptions file = ReadOptionsFile(PositionalPath(line, 0), line.command);
  if (file.path.empty()) return std::nullopt;
  for (auto& [name, values] : file.options) {
    if (!line.options.try_emplace(name, std::move(values)).second) continue;
    origins[name] = fmt::format("{}, line {}", file.path, file.lines.at(name));
  }
  return file.path;
}

ExportArguments OwnArguments(CommandLine line, const ExportArguments& shared) {
  if (shared.outputFolder) line.positionals = {shared.scene.path};
  OptionOrigins origins;
  const std::optional<std::string> optionsFile = AddFileOptions(line, origins);
  ExportArguments arguments = ReadExportArguments(line);
  arguments.optionsFile = optionsFile;
  if (shared.outputFolder) arguments = ArgumentsOf(arguments, arguments.jobs.front());
  arguments.quiet = shared.quiet;
  return arguments;
}

}  // namespace mapexport
