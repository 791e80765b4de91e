#include "cli/OptionReading.h"

#include <algorithm>

#include <fmt/format.h>

#include "cli/NearestName.h"
#include "cli/OptionValues.h"

namespace mapexport {

std::string RequirePath(const CommandLine& line, std::string_view name, const std::string& path) {
  if (path.empty()) throw UsageError(fmt::format("{}: the path is empty", name), line.command);
  // As a file of options or a report can have it.
  if (path.find('\0') != path.npos) {
    throw UsageError(fmt::format("{}: the path has a NUL character", name), line.command);
  }
  return path;
}

std::string PositionalPath(const CommandLine& line, std::size_t index) {
  return RequirePath(line, line.command->positionals[index].name, line.positionals[index]);
}

std::optional<std::string> PathValue(const CommandLine& line, std::string_view option) {
  std::optional<std::string> path = line.Value(option);
  if (path) RequirePath(line, fmt::format("--{}", option), *path);
  return path;
}

std::vector<std::string> PathValues(const CommandLine& line, std::string_view option) {
  std::vector<std::string> paths;
  for (const std::string& path : line.Values(option)) {
    paths.push_back(RequirePath(line, fmt::format("--{}", option), path));
  }
  return paths;
}

std::optional<std::uint32_t> WholeValue(const CommandLine& line, std::string_view option) {
  const std::optional<std::string> value = line.Value(option);
  if (!value) return std::nullopt;
  const std::optional<std::uint32_t> number = ParseWhole(*value);
  if (!number) {
    throw UsageError(
        fmt::format("--{}: \"{}\" is not a whole number from 0 to 4294967295", option, *value),
        line.command);
  }
  return number;
}

std::optional<float> ScaleValue(const CommandLine& line) {
  const std::optional<std::string> value = line.Value("scale");
  if (!value || *value == "auto") return std::nullopt;
  const std::optional<float> scale = ParseFloat(*value);
  if (!scale || *scale <= 0) {
    throw UsageError(fmt::format("--scale: \"{}\" is neither auto nor a decimal number above 0 in "
                                 "the range of a 32-bit float",
                                 *value),
                     line.command);
  }
  return scale;
}

std::optional<std::size_t> WordValue(const CommandLine& line, const OptionInfo& option) {
  const std::optional<std::string> value = line.Value(option.name);
  if (!value) return std::nullopt;
  const auto found = std::ranges::find(option.words, *value);
  if (found == option.words.end()) {
    throw UsageError(fmt::format("--{}: \"{}\" is not one of {}", option.name, *value,
                                 fmt::join(option.words, ", ")),
                     line.command);
  }
  return static_cast<std::size_t>(found - option.words.begin());
}

std::span<const std::string> WordValues(const CommandLine& line, const OptionInfo& option) {
  const std::span<const std::string> values = line.Values(option.name);
  for (const std::string& value : values) {
    if (std::ranges::find(option.words, value) != option.words.end()) continue;
    const std::vector<std::string> words(option.words.begin(), option.words.end());
    throw UsageError(fmt::format("--{}: there is no {} \"{}\"{}", option.name, option.argument,
                                 value, Suggestion(value, words)),
                     line.command);
  }
  return values;
}

std::optional<int> RowValue(const CommandLine& line, const OptionInfo& option) {
  const std::optional<std::string> value = line.Value(option.name);
  if (!value) return std::nullopt;
  const std::optional<int> row = ParseRow(option.rows, *value);
  if (!row) {
    throw UsageError(fmt::format("--{}: \"{}\" is not one of 0 to {}, {}", option.name, *value,
                                 option.rows.size() - 1, fmt::join(option.rows, ", ")),
                     line.command);
  }
  return row;
}

}  // namespace mapexport
