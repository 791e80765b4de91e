// Reads the arguments of a command. Each function throws UsageError for a wrong value, and returns
// nothing for an option that is not given.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "cli/CommandLine.h"

namespace mapexport {

/// Throws for a `path` that is empty or has a NUL; the error begins with `name`.
std::string RequirePath(const CommandLine& line, std::string_view name, const std::string& path);

/// The path in that positional argument.
std::string PositionalPath(const CommandLine& line, std::size_t index);

/// All values of an option that can be repeated.
std::vector<std::string> PathValues(const CommandLine& line, std::string_view option);

std::optional<std::string> PathValue(const CommandLine& line, std::string_view option);

/// A whole number from 0 to 4294967295.
std::optional<std::uint32_t> WholeValue(const CommandLine& line, std::string_view option);

/// The number of --scale, above 0; nothing for "auto", too.
std::optional<float> ScaleValue(const CommandLine& line);

/// The index of the value among the option's words; other values are refused.
std::optional<std::size_t> WordValue(const CommandLine& line, const OptionInfo& option);

/// All values of an option that can be repeated, each one of its words.
std::span<const std::string> WordValues(const CommandLine& line, const OptionInfo& option);

/// The index of the row that the value names.
std::optional<int> RowValue(const CommandLine& line, const OptionInfo& option);

}  // namespace mapexport
